// "-ci:": changes the board id of a device.
#pragma once

#include <velq/types.h>

#include <string>

/// Changes the board id of the device to the one that `option` has after its colon, and its description to one without
/// spaces that ends in "#" and that id. Returns 0; -1 when that is no number or the library refuses the id or the
/// description; -2 when the device cannot be opened. The device stays open on every failure.
int changeBoardID(std::string option, Automation::Velq::DeviceInformation& device);
