// The installed devices that a pattern describes.
#pragma once

#include <string>
#include <vector>

/// The descriptions of all installed devices that match `pattern`, in the library's order; empty when there is none or
/// no list. The first "?" matches one character, the first "*" any string, and it removes the pattern's next
/// character; the rest is an ECMAScript expression, compared regardless of case. Throws std::regex_error when a device
/// is installed and the pattern cannot be compiled.
std::vector<std::string> getMatchedDevice(std::string pattern);
