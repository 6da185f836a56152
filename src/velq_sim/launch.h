// Running a command with the simulator in place of the system's device library.
#pragma once

#include "velq_sim/options.h"

namespace velq_sim {

/// Sets the variables that the libraries read to the request's rig, state, trace and faults; files as absolute paths,
/// so that they stay the same when the command changes its directory.
void exportRequest(const Request& request);

/// Becomes the command: with the simulator, the probe too when the environment asks for a trace or faults, and the
/// programs beside this one on PATH. Throws Failure when a library is missing or the command cannot be run.
[[noreturn]] void launch(char** command);

}  // namespace velq_sim
