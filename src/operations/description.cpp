#include "operations/description.h"

#include <velq/velq.h>

#include <cstdio>
#include <cwchar>

#include "operations/conversion.h"
#include "operations/environment_locale.h"
#include "qutil/wildcard.h"

using namespace Automation::Velq;

namespace {

WideString substitute(const wchar_t* oldDescription, const std::string& pattern) {
  const EnvironmentLocale locale;
  std::string result;
  MyReplace(narrow(oldDescription), pattern, result);
  puts("Change device description start!");
  return widen(result);
}

}  // namespace

int changeDescription(std::string selector, std::string option, DeviceInformation& device) {
  const size_t begin = option.find(':') + 1;
  const std::string pattern = option.substr(begin);
  // Quirk: throws when the option's colon is beyond the end of the selector; the result is not used.
  static_cast<void>(selector.substr(begin));

  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, device.OpenMode);
  if (opened == nullptr) {
    // Quirk: "Board ID", in a change of the description.
    printf("Failed to change Board ID of device %d! (Errorlevel = %d).\n", device.DeviceNumber, 3);
    return -1;
  }
  if (pattern.find_first_of("+-@/") != std::string::npos) {
    printf("Failed to change Description of device %d! (Errorlevel = %d)\n", DeviceCtrl_getDeviceNumber(opened), 3);
    return 3;
  }
  // Quirk: straight into the record, so the caller's record has the old description afterwards.
  DeviceCtrl_getDescription(opened, DescriptionCapacity, device.Description);
  device.Description[DescriptionCapacity - 1] = 0;

  const WideString description = substitute(device.Description, pattern);
  const auto length = static_cast<int32_t>(std::wcslen(description.data()));
  if (DeviceCtrl_setDescription(opened, length + 1, description.data()) != Success) {
    puts("setDescription error!");
    return -1;
  }
  printf("Device description has changed from %S to %S\n", device.Description, description.data());
  DeviceCtrl_dispose(opened);
  return 0;
}
