// "/dd:Name -fusion child...": creates a fusion device, or extends one.
#pragma once

#include <string>

/// Fuses the devices named by the arguments from the fourth on (one or two) into a fusion device described
/// `description`. Returns 0, or -1 when they cannot be fused or the new device cannot be opened.
int buildFusionDevice(int argc, char** argv, const std::string& description);
