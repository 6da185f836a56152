// A check: one promise of <velq/operations.def>, tried on all devices that the library lists. With all that every
// check uses.
#pragma once

#include <string>
#include <vector>

#include "compliance/devices/devices.h"
#include "compliance/devices/next_process.h"
#include "compliance/devices/snapshot.h"
#include "compliance/library/library.h"

namespace compliance {

/// What there is to check.
struct CheckContext {
  Library& library;
  const NextProcess& next;
  const Snapshot& before;  ///< all that could be read before the other checks; empty until then
};

/// Whether a check changes devices.
enum class CheckAccess { Reads, Writes };

/// One row of checks.def. Runs in a process of its own.
struct Check {
  CheckAccess access;
  void (*run)(const CheckContext& context, const Findings& findings);
  const char* name;
  const char* needs;
};

#define CHECK(access, function, name, needs) void function(const CheckContext& context, const Findings& findings);
#include "compliance/checks/checks.def"

/// All checks, in their order.
inline constexpr Check AllChecks[] = {
#define CHECK(access, function, name, needs) {CheckAccess::access, function, name, needs},
#include "compliance/checks/checks.def"
};

}  // namespace compliance
