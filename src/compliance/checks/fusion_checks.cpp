// Fusion devices as far as they can be looked at.
#include <set>

#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"

namespace compliance {

using namespace Automation::Velq;

void checkUnknownFusion(const CheckContext&, const Findings& findings) {
  std::set<int32_t> numbers = unusedNumbers();
  numbers.insert({-1, -2});
  for (const int32_t number : numbers) expectNoFusionDevice(number, findings);
}

void checkFusionChildren(const CheckContext&, const Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const Findings& here) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    if (CvxIsFusionDevice(number) == Success)
      expectListedChildren(number, here);
    else
      expectNoFusionDevice(number, findings);
  });
}

}  // namespace compliance
