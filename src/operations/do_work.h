// The dispatcher: runs on one device the operation that the arguments name.
#pragma once

#include <velq/types.h>

/// Runs the operation for the device that `device` names; its number, mode and description may be filled in on the way.
/// Takes the process's own arguments. Returns 0 when an operation ran, whatever came of it, or none was named; -1 when
/// the device or a control for it could not be had, or the operation is not for fusion devices.
int doWork(int argc, char** argv, Automation::Velq::DeviceInformation& device);
