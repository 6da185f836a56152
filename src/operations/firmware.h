// "-fw" and "-fwo:": the firmware of a device's chips, shown and overwritten. Both work on a control that is bound to
// the device and leave it to the caller.
#pragma once

#include <velq/types.h>

#include <string>

/// Prints description and version of every chip; prints no more when the library returns no list or no
/// device description.
void QueryFwInfo(Automation::Velq::FirmwareCtrls* control, Automation::Velq::DeviceInformation& device);

/// Overwrites the chip that `chip` numbers (0 when empty) with the file that `option` has after its colon, and waits
/// for the end, which may never come. Returns 0, after a refused load or start too; -1 when there is no such chip; 3
/// when nothing valid was loaded; 100 when the overwrite was aborted at once.
int FwDownload(Automation::Velq::FirmwareCtrls* control, std::string option, std::string chip, std::string password,
               Automation::Velq::DeviceInformation& device);

/// Stores in `message` what a firmware load's status means to the operator.
void GetMsg(Automation::Velq::ErrorCode status, std::string& message);
