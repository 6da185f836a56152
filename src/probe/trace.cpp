#include "probe/trace.h"

#include <iterator>

namespace probe {

using namespace Automation::Velq;

std::string show(const DeviceInformation* device) {
  if (device == nullptr) return "null";
  return "{" + std::to_string(device->DeviceNumber) + ", " + std::to_string(device->OpenMode) + ", " +
         std::to_string(device->ModuleIndex) + ", " +
         text::escaped(device->Description, std::size(device->Description)) + "}";
}

std::string show(const int32_t* values, int64_t count) {
  if (values == nullptr) return "null";
  std::string shown = "[";
  for (int64_t i = 0; i < std::min<int64_t>(count, MostFusionChildren); ++i)
    shown.append(i == 0 ? "" : ", ").append(std::to_string(values[i]));
  return shown + "]";
}

std::string showCodes(const uint32_t* codes) {
  int32_t count = CalibrationCodeCount;
  // Zeros at the end are left out: a library may fill few codes.
  while (count > 1 && codes[count - 1] == 0) --count;
  std::string shown = "[";
  for (int32_t i = 0; i < count; ++i) shown.append(i == 0 ? "" : ", ").append(text::hexadecimal(codes[i]));
  return shown + "]";
}

}  // namespace probe
