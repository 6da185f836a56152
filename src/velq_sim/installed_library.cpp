#include "velq_sim/installed_library.h"

#include <dlfcn.h>
#include <velq/library.h>

#include <string>

#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

constexpr const char* Entry = "CvxQuellisLibInitialize";

const Automation::Velq::LibraryTable* loaded = nullptr;

}  // namespace

void loadInstalledLibrary() {
  // Global, so that a preloaded probe finds the library behind itself.
  if (dlopen(SIMULATOR_LIBRARY, RTLD_NOW | RTLD_GLOBAL) == nullptr) throw Failure(Failed, dlerror());
  // Not through the library's handle: in the default order a preloaded probe comes first.
  const auto entry = reinterpret_cast<decltype(&CvxQuellisLibInitialize)>(dlsym(RTLD_DEFAULT, Entry));
  if (entry != nullptr) loaded = entry();
  if (loaded == nullptr || loaded->functions == nullptr || loaded->objects == nullptr)
    throw Failure(Failed, std::string(SIMULATOR_LIBRARY) + ": is not a device library: it has no operations");
}

}  // namespace velq_sim

// <velq/velq.h> calls it: velq-sim, unlike a tool, is not linked to a library.
const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() { return velq_sim::loaded; }
