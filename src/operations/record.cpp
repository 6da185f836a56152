#include "operations/record.h"

#include <cwchar>

#include "operations/conversion.h"

using namespace Automation::Velq;

DeviceInformation recordOf(int32_t number) {
  return {.DeviceNumber = number, .OpenMode = AccessDevice, .ModuleIndex = 0, .Description = {}};
}

DeviceInformation recordOf(const std::string& description) {
  DeviceInformation record = recordOf(-1);
  // The record is zero filled, so its last character terminates the description.
  std::wcsncpy(record.Description, widen(description).data(), DescriptionCapacity - 1);
  return record;
}
