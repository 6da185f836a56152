#include "qutil/device_list.h"

#include <velq/velq.h>

#include <cstdio>

#include "operations/environment_locale.h"
#include "qutil/installed_devices.h"

using namespace Automation::Velq;

int getAllInstalledDevice() {
  Array* const devices = DeviceCtrl_getInstalledDevices();
  if (devices == nullptr) return static_cast<int>(ErrorNoDeviceList);
  const int32_t count = Array_getLength(devices);
  if (count == 0) {
    printf("No Quellis device in system!(Errorlevel = %d)\n", 2);
    return 2;
  }
  puts("Quellis devices list in system:");
  // Descriptions can have characters that the locale "C" cannot print.
  const EnvironmentLocale locale;
  for (int32_t i = 0; i < count; ++i) {
    const wchar_t* const description = installedDescription(devices, i);
    if (description == nullptr) break;
    // Quirk: the position in the list, not the number of the device.
    printf("%d,%S\n", i, description);
  }
  return 0;
}
