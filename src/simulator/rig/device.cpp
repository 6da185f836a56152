#include "simulator/rig/device.h"

#include <cstdio>

namespace simulator {

std::string shown(const FirmwareVersion& version) {
  if (const auto* const text = std::get_if<std::string>(&version)) return *text;
  const unsigned number = std::get<uint16_t>(version);
  char digits[8];
  // Binary coded decimal: the hexadecimal digits are the decimal ones of the version.
  snprintf(digits, sizeof digits, "%x.%02x", number >> 8U, number & 0xFFU);
  return digits;
}

}  // namespace simulator
