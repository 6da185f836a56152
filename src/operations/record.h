// The records that name devices to the library.
#pragma once

#include <velq/types.h>

#include <string>

/// The record of a device that is chosen by number.
Automation::Velq::DeviceInformation recordOf(int32_t number);

/// The record of a device that is chosen by description, cut to 63 characters. A description of more than
/// 256 bytes ends the process with abort().
Automation::Velq::DeviceInformation recordOf(const std::string& description);
