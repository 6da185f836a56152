// The "-cali:" options. Both functions work on a control that is bound to the device and leave it to the caller.
#pragma once

#include <velq/types.h>

/// Runs every solution whose name contains `procedure`: guides the operator through its sections, shows each adjusting
/// code while it is calibrated, and asks whether the new codes are to be used. Returns 0; -1 without a control or a
/// list of solutions; 0xE0000019 (as an int) when a section could not start because the device is busy. Throws
/// std::logic_error when the library returns a null name.
int startCalibration(Automation::Velq::CalibrationCtrl* ctrl, const wchar_t* procedure);

/// Restores the backup codes of every solution for analog input, or output, and makes them current. Returns 0, or -1
/// without a control or a list of solutions. Throws as `startCalibration` does.
int LoadFromGoldenBackup(Automation::Velq::CalibrationCtrl* ctrl, bool analogInput,
                         Automation::Velq::DeviceInformation& info);
