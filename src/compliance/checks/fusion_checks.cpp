// Fusion devices as far as they can be looked at.
#include <set>
#include <string>

#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"
#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

void checkUnknownFusion(const CheckContext&, Findings& findings) {
  std::set<int32_t> numbers = unusedNumbers();
  numbers.insert({-1, -2});
  for (const int32_t number : numbers) expectNoFusionDevice(number, findings);
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
