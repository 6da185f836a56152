// "-defusion": dissolves a fusion device.
#pragma once

#include <velq/types.h>

/// Takes all children out of the fusion device. A record chosen by description gets its number. Returns 0, silently
/// when the library fails; -1 when the device cannot be opened or is no fusion device.
int dissolveFusionDevice(Automation::Velq::DeviceInformation& device);
