// Fusion devices as far as they can be looked at.
#include <string>

#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"
#include "compliance/devices/devices.h"

namespace compliance {

void checkUnknownFusion(const CheckContext&, Findings& findings) {
  for (const int32_t number : {-1, -2, UnknownNumber, unusedNumber()}) expectNoFusionDevice(number, findings);
}

void checkFusionChildren(const CheckContext&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    if (CvxIsFusionDevice(number) == Success)
      expectListedChildren(number, findings, where);
    else
      expectNoFusionDevice(number, findings);
  });
}

}  // namespace compliance
