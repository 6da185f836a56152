// "--reset": reverts what commands have changed.
#pragma once

namespace velq_sim {

/// Deletes the state file that the environment names, if there is one. Throws Failure, and deletes nothing, when the
/// environment names none, when the file is no state of the simulator, or when it cannot be deleted.
void resetState();

}  // namespace velq_sim
