// The rules that hold for every array.
#pragma once

#include <velq/types.h>

#include <string>

#include "compliance/findings.h"

namespace compliance {

/// Expects a length of 0 or more, no null element, and length and addresses that stay the same when asked for again.
/// A null array is as good. Returns whether all of this holds, so that the elements can be looked at.
bool expectStable(Automation::Velq::Array* array, Findings& findings, const std::string& where);

}  // namespace compliance
