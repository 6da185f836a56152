// What a tool calls: one function an operation, named as the operation. Each passes its arguments and its result
// through unchanged.
#pragma once

#include <velq/library.h>

namespace Automation::Velq {

/// The library's tables, fetched with the first call and kept until the process ends. Never null.
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
