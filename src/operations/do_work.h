// The dispatcher: runs the operation that the arguments name on one device. Output, signatures, order of library calls
// and objects that are never released are frozen in all of src/operations: scripts and libraries depend on them. A line
// that looks like a mistake and has to stay is marked "Quirk:".
#pragma once

#include <velq/types.h>

/// Runs the operation for the device that `device` names; its number, mode and description may be filled in on the way.
/// Takes the process's own arguments. Returns -1 when the device, or a control for it, could not be opened or is not of
/// the kind that the operation is for; 0 otherwise, also when the operation failed and when the arguments name none.
int doWork(int argc, char** argv, Automation::Velq::DeviceInformation& device);
