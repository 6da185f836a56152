// The interface that a device library implements: two tables of operations and one exported entry.
#pragma once

#include <velq/types.h>

namespace Automation::Velq {

/// The plain functions. Each field is described in <velq/operations.def>; none may be null.
struct FunctionTable {
#define VELQ_FUNCTION(result, name, parameters, arguments) result(*name) parameters;
#include <velq/operations.def>
};

/// The operations on objects. Each field is described in <velq/operations.def>; none may be null.
struct ObjectTable {
#define VELQ_OBJECT(result, name, parameters, arguments) result(*name) parameters;
#include <velq/operations.def>
};

/// The result of the entry. Both tables live until the process ends.
struct LibraryTable {
  const FunctionTable* functions;
  const ObjectTable* objects;
};

}  // namespace Automation::Velq

/// The only symbol that a device library exports. A tool calls it once, with its first library call. It always
/// succeeds: a library without devices or driver returns its tables all the same and refuses in the operations.
extern "C" __attribute__((visibility("default"))) const Automation::Velq::LibraryTable* CvxQuellisLibInitialize();
