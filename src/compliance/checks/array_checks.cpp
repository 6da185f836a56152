// Arrays stay as they are for as long as what they were asked of.
#include <vector>

#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"
#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

template <typename Value, Array* (*Getter)(DeviceCtrl*)>
void checkValues(Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    Array* const array = Getter(device);
    if (!expectStable(array, findings, where)) return;
    const std::vector<Value> values = valuesOf<Value>(array);
    // Any other call: a library may have one buffer for all that it returns.
    descriptionOf(device);
    Array* const again = Getter(device);
    findings.expect((again == nullptr) == (array == nullptr), "once null and once not", where);
    findings.expect(valuesOf<Value>(array) == values, "other values after other calls", where);
    findings.expect(valuesOf<Value>(again) == values, "other values when requested again", where);
  });
}

}  // namespace

void checkBaseAddresses(const CheckContext&, Findings& findings) {
  checkValues<uint64_t, DeviceCtrl_getBaseAddresses>(findings);
}

void checkInterrupts(const CheckContext&, Findings& findings) {
  checkValues<int32_t, DeviceCtrl_getInterrupts>(findings);
}

}  // namespace compliance
