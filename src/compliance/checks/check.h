// A check: one promise of <velq/operations.def>, tried on all devices that the library lists. With all that every
// check uses.
#pragma once

#include "compliance/devices/devices.h"
#include "compliance/devices/next_process.h"
#include "compliance/devices/snapshot.h"
#include "compliance/library/library.h"

namespace compliance {

/// What there is to check, and where to note what is found.
struct CheckContext {
  Library& library;
  const NextProcess& next;
  const Snapshot& before;  ///< all that could be read before the other checks; empty until then
  const Findings& findings;
};

/// Whether a check changes devices.
enum class CheckAccess { Reads, Writes };

/// One row of checks.def. Runs in a process of its own. An exception that it lets out is a finding.
struct Check {
  CheckAccess access;
  void (*run)(const CheckContext& context);
  const char* name;
  const char* needs;
};

/// Expects of an array a length of 0 or more, no null element, and length and addresses that stay the same when asked
/// for again. A null array is as good. Returns whether all of this holds, so that the elements can be looked at.
bool expectStable(Array* array, const Findings& here);

/// Expects of the list of installed devices that each has a description of its own, which a record has room for.
void expectDistinctDevices(const Findings& here);

/// Expects of a fusion device that it lists its children within the capacity, each of them once, and adds none of them
/// again.
void expectListedChildren(int32_t fusionNumber, const Findings& here);

/// Expects that no operation takes the number for that of a fusion device.
void expectNoFusionDevice(int32_t number, const Findings& findings);

#define CHECK(access, function, name, needs) void function(const CheckContext& context);
#include "compliance/checks/checks.def"

/// All checks, in their order.
inline constexpr Check AllChecks[] = {
#define CHECK(access, function, name, needs) {CheckAccess::access, function, name, needs},
#include "compliance/checks/checks.def"
};

}  // namespace compliance
