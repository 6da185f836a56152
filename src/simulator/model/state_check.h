// Whether a state was written for a rig.
#pragma once

#include <string>

#include "simulator/model/groups.h"

namespace simulator {

/// Why the contents cannot have been written for this rig; empty when they fit it. `groups` are those of rig and
/// contents.
std::string findMismatch(const Rig& rig, const Groups& groups, const StateContents& contents);

}  // namespace simulator
