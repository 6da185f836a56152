// Reading one device of any library, as a rig has it.
#pragma once

#include <deque>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace velq_sim {

/// JSON with its keys in the order in which they are added.
using Json = nlohmann::ordered_json;

/// Devices as in a rig.
struct Devices {
  std::deque<Json> all;  ///< in the order in which they were read; a deque, so that they keep their addresses
  std::map<int32_t, Json*> byNumber;
};

/// Writes a line about the device with this description to standard error.
void report(const std::wstring& description, const std::string& message);

/// Writes a line for each kind of control that the library cannot create; the devices are read without it.
void reportMissingControls();

/// Adds the device that is listed with this description: all that a library reports of it, and the product id also
/// where a rig has it unless another is given. What a rig cannot hold is changed as little as possible, and is a line
/// on standard error. Adds none, after a line, when it cannot be opened, or when its number is not valid or that of a
/// device before.
void addDevice(const std::wstring& description, Devices& devices);

}  // namespace velq_sim
