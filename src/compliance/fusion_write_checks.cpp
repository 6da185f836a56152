// Making, extending and dissolving a fusion device.
#include <algorithm>
#include <string>
#include <vector>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

using Children = std::vector<int32_t>;

std::string placeOf(int32_t number) { return "fusion device " + std::to_string(number); }

void checkGroup(int32_t number, const Children& children, Findings& findings) {
  const std::string where = placeOf(number);
  const OpenDevice device = openDevice(number, nullptr);
  if (findings.expect(device != nullptr, "cannot be opened by its number", where)) {
    const std::vector<std::wstring> listed = listedDescriptions();
    findings.expect(std::count(listed.begin(), listed.end(), descriptionOf(device.get())) > 0, "is not listed", where);
  }
  findings.expect(CvxIsFusionDevice(number) == Success, "is not called a fusion device", where);
  Children present = childrenOf(number);
  std::sort(present.begin(), present.end());
  findings.expect(present == children, std::to_string(present.size()) + " children, not those that it was made of",
                  where);
}

void checkExtension(int32_t number, const Children& children, Findings& findings) {
  const ErrorCode status = CvxFusionDeviceAddChildren(number, 1, &UnknownNumber);
  findings.expect(status != Success, "takes a child that is not there", placeOf(number));
  checkGroup(number, children, findings);
}

void dissolve(int32_t number, const Children& children, Findings& findings) {
  const std::string where = placeOf(number);
  const auto count = static_cast<int32_t>(children.size());
  const ErrorCode status = CvxFusionDeviceRemoveChildren(number, count, children.data());
  findings.expect(status == Success, "does not let its children go, status " + show(status), where);
  findings.expect(CvxIsFusionDevice(number) != Success, "is a fusion device without its last child", where);
  findings.expect(openDevice(number, nullptr) == nullptr, "can be opened without its last child", where);
}

// The first two devices of one product, in order of their numbers, that are not fused; empty when there are none.
Children fusablePair() {
  std::vector<std::pair<int32_t, int32_t>> seen;
  for (const std::wstring& description : listedDescriptions()) {
    const OpenDevice device = openDevice(description);
    if (device == nullptr) continue;
    const int32_t number = DeviceCtrl_getDeviceNumber(device.get());
    const int32_t product = DeviceCtrl_getProductId(device.get());
    if (CvxIsFusionDevice(number) == Success) continue;
    for (const auto& [otherProduct, other] : seen)
      if (otherProduct == product) return {std::min(number, other), std::max(number, other)};
    seen.emplace_back(product, number);
  }
  return {};
}

void checkFusion(const Bench&, Findings& findings) {
  int32_t number = 0;
  if (CvxFusionDeviceCreate(1, &UnknownNumber, &number) == Success) {
    findings.expect(false, "is made of a device that is not there", placeOf(number));
    dissolve(number, {UnknownNumber}, findings);
  }
  const Children children = fusablePair();
  if (children.empty()) return;
  number = 0;
  const auto count = static_cast<int32_t>(children.size());
  if (CvxFusionDeviceCreate(count, children.data(), &number) != Success) return;
  checkGroup(number, children, findings);
  checkExtension(number, children, findings);
  dissolve(number, children, findings);
}

void checkPutBack(const Bench& bench, Findings& findings) {
  const std::string difference = firstDifference(bench.before, takeSnapshot());
  findings.expect(difference.empty(), difference, "although all changes were put back");
}

constexpr Check List[] = {{"write-fusion", checkFusion}, {"writes-put-back", checkPutBack}};

}  // namespace

const Checks FusionWriteChecks = List;

}  // namespace compliance
