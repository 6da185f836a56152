// The places of rig and state in the environment. All of it is ignored in a set-user-id process.
#pragma once

#include <string>

#include "simulator/state/state_file.h"

namespace simulator {

/// VELQ_RIG; empty for the built-in rig.
std::string rigPathFromEnvironment();

/// VELQ_STATE; else a file in the directory velq-sim below XDG_STATE_HOME or ~/.local/state, one for the built-in rig
/// and one for each resolved path of a rig. Relative XDG_STATE_HOME and HOME are ignored. The path is empty when
/// nothing says where.
StatePlace statePlaceFromEnvironment();

}  // namespace simulator
