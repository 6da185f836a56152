// Rules that several checks look at.
#pragma once

#include <velq/types.h>

#include <cstdint>
#include <string>

#include "compliance/library/findings.h"

namespace compliance {

/// Expects of an array a length of 0 or more, no null element, and length and addresses that stay the same when asked
/// for again. A null array is as good. Returns whether all of this holds, so that the elements can be looked at.
bool expectStable(Automation::Velq::Array* array, Findings& findings, const std::string& where);

/// Expects of the list of installed devices that each has a description of its own, which a record has room for.
void expectDistinctDevices(Findings& findings);

/// Expects of a fusion device that it lists its children within the capacity, each of them once, and adds none of them
/// again.
void expectListedChildren(int32_t fusionNumber, Findings& findings, const std::string& where);

/// Expects that no operation takes the number for that of a fusion device.
void expectNoFusionDevice(int32_t number, Findings& findings);

}  // namespace compliance
