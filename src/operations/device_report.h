// The detail report.
#pragma once

#include <velq/types.h>

/// Prints all that the library knows of the device. Returns 0, or -1 when it cannot be opened. The opened device is
/// never released.
int QueryDeviceInfo(Automation::Velq::DeviceInformation& device);
