// Fusion devices as far as they can be looked at.
#include <algorithm>
#include <string>
#include <vector>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

void checkUnknownIsNoFusion(const Bench&, Findings& findings) {
  for (const int32_t number : {-1, -2, UnknownNumber})
    findings.expect(CvxIsFusionDevice(number) != Success, "is called a fusion device",
                    "number " + std::to_string(number) + ", which is none");
}

void checkChildren(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    if (CvxIsFusionDevice(number) != Success) return;
    constexpr int32_t most = 256;
    constexpr int32_t filler = -12345;
    std::vector<int32_t> children(2 * most, filler);
    int32_t count = most;
    const ErrorCode status = CvxFusionDeviceGetChildren(number, &count, children.data());
    if (!findings.expect(status == Success, "children: status " + show(status), where)) return;
    if (!findings.expect(count > 0 && count <= most, std::to_string(count) + " children", where)) return;
    findings.expect(std::all_of(children.begin() + count, children.end(), [](int32_t n) { return n == filler; }),
                    "writes behind the " + std::to_string(count) + " children that it counts", where);
    for (int32_t i = 0; i < count; ++i) {
      const int32_t child = children[static_cast<size_t>(i)];
      findings.expect(openDevice(child, nullptr) != nullptr, "child " + std::to_string(child) + " cannot be opened",
                      where);
    }
    findings.expect(CvxFusionDeviceCheckChildren(number, 1, &UnknownNumber) != Success,
                    "would take a child that is not there", where);
  });
}

constexpr Check List[] = {{"fusion-unknown", checkUnknownIsNoFusion}, {"fusion-children", checkChildren}};

}  // namespace

const Checks FusionChecks = List;

}  // namespace compliance
