// The installed devices, as a rig.
#pragma once

#include "simulator/rig/rig.h"

namespace velq_sim {

/// Loads the device library that the dynamic loader finds for qutil, and reads all devices that it lists. Whatever a
/// rig cannot hold is changed as little as possible, what cannot be read is left out, and each is a line on standard
/// error. Throws Failure when there is no library or none of its devices can be read.
simulator::Rig readInstalledRig();

}  // namespace velq_sim
