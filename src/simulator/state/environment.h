// Where the environment says that rig and state are. All of it is ignored in a set-user-id process.
#pragma once

#include <string>

#include "simulator/state/state_file.h"

namespace simulator {

/// VELQ_RIG; empty stands for the built-in rig.
std::string rigPathFromEnvironment();

/// VELQ_STATE; else a file beside the rig that VELQ_RIG names; else, for the built-in rig, one under XDG_STATE_HOME or
/// ~/.local/state, in a folder of its own. The path is empty when nothing says where.
StatePlace statePlaceFromEnvironment();

}  // namespace simulator
