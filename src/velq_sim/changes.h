// "--changes": what commands have changed.
#pragma once

namespace velq_sim {

/// Prints a line for each difference between the rig and the devices as they are, with the old and the new value, in
/// the order of the list of devices. Returns false, after a line on standard error, when rig or state cannot be used.
bool showChanges();

}  // namespace velq_sim
