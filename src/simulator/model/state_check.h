// Whether a state was written for a rig.
#pragma once

#include <string>

#include "simulator/model/groups.h"

namespace simulator {

/// How the contents show that they were not written for this rig; empty when they fit it. `groups` are those that rig
/// and contents make.
std::string findMismatch(const Rig& rig, const Groups& groups, const StateContents& contents);

/// The state item that keeps the code in use of one calibration item.
std::string calibrationItem(size_t solution, size_t section, size_t item);

/// The state item that keeps a chip's version.
std::string firmwareItem(size_t chip);

}  // namespace simulator
