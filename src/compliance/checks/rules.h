// Rules that several checks look at.
#pragma once

#include "compliance/devices/devices.h"

namespace compliance {

/// Expects of an array a length of 0 or more, no null element, and length and addresses that stay the same when asked
/// for again. A null array is as good. Returns whether all of this holds, so that the elements can be looked at.
bool expectStable(Automation::Velq::Array* array, const Findings& here);

/// Expects of the list of installed devices that each has a description of its own, which a record has room for.
void expectDistinctDevices(const Findings& here);

/// Expects of a fusion device that it lists its children within the capacity, each of them once, and adds none of them
/// again.
void expectListedChildren(int32_t fusionNumber, const Findings& here);

/// Expects that no operation takes the number for that of a fusion device.
void expectNoFusionDevice(int32_t number, const Findings& findings);

}  // namespace compliance
