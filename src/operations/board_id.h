// "-ci:": gives a device a new board id.
#pragma once

#include <velq/types.h>

#include <string>

/// Gives the device the board id that `option` has after its colon, and a description without spaces that ends in
/// "#" and that id. Returns 0; -1 when that is no number or the library refuses the id or the description; -2 when the
/// device cannot be opened. The device stays open on every failure.
int changeBoardID(std::string option, Automation::Velq::DeviceInformation& device);
