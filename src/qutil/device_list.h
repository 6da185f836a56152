// The installed devices: listed, and matched by description.
#pragma once

#include <string>
#include <vector>

/// Prints a line a device: its position in the library's list and its description, in the environment's character set.
/// Returns 0, 2 when no device is installed, or 0xE0000000 (as an int) when the library gives no list.
int getAllInstalledDevice();

/// The descriptions of all installed devices that match `pattern`, in the library's order; empty when there is none or
/// no list. The first "?" stands for one character, the first "*" for any text and swallows the pattern's next
/// character; the rest is an ECMAScript expression, compared regardless of case. Throws std::regex_error when a device
/// is installed and the pattern cannot be compiled.
std::vector<std::string> getMatchedDevice(std::string pattern);
