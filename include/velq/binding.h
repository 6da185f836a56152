// The functions that a tool calls: one for each operation, with its name. Each passes arguments and result unchanged.
#pragma once

#include <velq/library.h>

namespace Automation::Velq {

/// The tables of the library, obtained with the first call and valid until the process ends. Never null.
inline const LibraryTable* QLB_PPtr() {
  static const LibraryTable* lib = nullptr;
  if (lib == nullptr) lib = CvxQuellisLibInitialize();
  return lib;
}

#define VELQ_FUNCTION(result, name, parameters, arguments) \
  inline result name parameters { return QLB_PPtr()->functions->name arguments; }
#define VELQ_OBJECT(result, name, parameters, arguments) \
  inline result name parameters { return QLB_PPtr()->objects->name arguments; }
#include <velq/operations.def>

}  // namespace Automation::Velq
