// Reading one device of any library, as a rig holds it.
#pragma once

#include <optional>
#include <string>

#include "simulator/rig/rig.h"

namespace velq_sim {

/// Writes a line about the device with this description to standard error.
void report(const std::wstring& description, const std::string& message);

/// Writes a line for each kind of control that the library cannot create; the devices are read without it.
void reportMissingControls();

/// Reads the device that is listed with this description. What a rig cannot hold is changed as little as possible, and
/// is a line on standard error. Nothing, after a line, when the device cannot be opened, or when its number is not
/// valid or that of a device in `rig`.
std::optional<simulator::Device> readDevice(const std::wstring& description, const simulator::Rig& rig);

}  // namespace velq_sim
