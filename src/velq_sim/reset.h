// "--reset": forgets what commands have changed.
#pragma once

namespace velq_sim {

/// Deletes the state file that the environment names. None is fine. Throws Failure, and deletes nothing, when it cannot
/// be told where the file is, when what is there is no state of the simulator, or when it cannot be deleted.
void resetState();

}  // namespace velq_sim
