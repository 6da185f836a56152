// Fusion devices as far as they can be looked at.
#include <algorithm>

#include "compliance/checks/check.h"

namespace compliance {

namespace {

constexpr int32_t Untouched = -12345;

// What the library lists with room for `capacity` children, and whether it wrote anything behind them.
struct Listing {
  Listing(int32_t number, int32_t capacity)
      : children(2 * MostFusionChildren, Untouched),
        count(capacity),
        status(CvxFusionDeviceGetChildren(number, &count, children.data())) {}

  bool isUntouchedFrom(int32_t index) const {
    return std::all_of(children.begin() + index, children.end(), [](int32_t child) { return child == Untouched; });
  }

  std::vector<int32_t> children;
  int32_t count;
  ErrorCode status;
};

void checkChildren(int32_t number, const Listing& listing, const Findings& here) {
  std::set<int32_t> distinct;
  for (int32_t i = 0; i < listing.count; ++i) {
    const int32_t child = listing.children[static_cast<size_t>(i)];
    const std::string name = "child " + std::to_string(child);
    here.expect(openDevice(child, nullptr) != nullptr, name + " cannot be opened");
    here.expect(distinct.insert(child).second, name + " is listed twice");
    here.expect(CvxIsFusionDevice(child) != Success, name + " is a fusion device");
    here.expect(CvxFusionDeviceCheckChildren(number, 1, &child) != Success, name + " would be added again");
  }
}

}  // namespace

void expectListedChildren(int32_t number, const Findings& here) {
  const Listing listing(number, MostFusionChildren);
  if (!here.expect(listing.status == Success, "children: status " + show(listing.status))) return;
  const std::string count = std::to_string(listing.count);
  if (!here.expect(listing.count > 0 && listing.count <= MostFusionChildren, count + " children")) return;
  here.expect(listing.isUntouchedFrom(listing.count), "writes behind the " + count + " children that it counts");
  checkChildren(number, listing, here);
  here.expect(CvxFusionDeviceCheckChildren(number, 1, &UnknownNumber) != Success,
              "would add a child that is not there");
  if (listing.count == 1) return;
  const Listing tooFew(number, 1);
  here.expect(tooFew.status != Success, "lists " + count + " children in the room for 1");
  here.expect(tooFew.isUntouchedFrom(1), "writes more children than there is room for");
}

void expectNoFusionDevice(int32_t number, const Findings& findings) {
  const Findings here = findings.at("number " + std::to_string(number) + ", which is no fusion device");
  here.expect(CvxIsFusionDevice(number) != Success, "is reported as a fusion device");
  for (const int32_t capacity : {1, MostFusionChildren}) {
    const Listing listing(number, capacity);
    here.expect(listing.status != Success, "has children");
    here.expect(listing.isUntouchedFrom(capacity), "writes more children than there is room for");
  }
  here.expect(CvxFusionDeviceCheckChildren(number, 1, &UnknownNumber) != Success, "would add a child");
}

void checkUnknownFusion(const CheckContext& context) {
  std::set<int32_t> numbers = unusedNumbers();
  numbers.insert({-1, -2});
  for (const int32_t number : numbers) expectNoFusionDevice(number, context.findings);
}

void checkFusionChildren(const CheckContext& context) {
  forEachDevice(context.findings, [&](DeviceCtrl* device, const Findings& here) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    if (CvxIsFusionDevice(number) == Success)
      expectListedChildren(number, here);
    else
      expectNoFusionDevice(number, context.findings);
  });
}

}  // namespace compliance
