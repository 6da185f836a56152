// "-cd:": changes the description of a device.
#pragma once

#include <velq/types.h>

#include <string>

/// Changes the description of the device to the one that `option` has after its colon, wildcards filled from the old
/// one, which is stored in `device`. Returns 0; 3 when the new description contains one of "+-@/"; -1 when the device
/// cannot be opened or the library refuses. The device stays open on every failure. Throws std::out_of_range when the
/// option's colon lies beyond the end of `selector`.
int changeDescription(std::string selector, std::string option, Automation::Velq::DeviceInformation& device);
