// The device library that qutil meets on this machine.
#include <dlfcn.h>
#include <velq/library.h>

#include "velq_sim/failure.h"

using velq_sim::Failed;
using velq_sim::Failure;

// The first operation of <velq/velq.h> calls it, because velq-sim, unlike a tool, is not linked to a library. It throws
// Failure when there is none.
const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() {
  // As the dynamic loader finds it for qutil. Global, so that a preloaded probe finds the library behind itself.
  if (dlopen(SIMULATOR_LIBRARY, RTLD_NOW | RTLD_GLOBAL) == nullptr) throw Failure(Failed, dlerror());
  // Not through the library's handle: in the default order a preloaded probe comes first.
  void* const entry = dlsym(RTLD_DEFAULT, "CvxQuellisLibInitialize");
  const auto* const library =
      entry == nullptr ? nullptr : reinterpret_cast<decltype(&CvxQuellisLibInitialize)>(entry)();
  if (library == nullptr || library->functions == nullptr || library->objects == nullptr)
    throw Failure(Failed, SIMULATOR_LIBRARY ": is not a device library: it has no operations");
  return library;
}
