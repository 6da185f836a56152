#include "compliance/checks/rules.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

// Far beyond any list of devices.
constexpr int32_t MostElements = 10'000'000;

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

void checkChildren(int32_t number, const Listing& listing, Findings& findings, const std::string& where) {
  std::set<int32_t> distinct;
  for (int32_t i = 0; i < listing.count; ++i) {
    const int32_t child = listing.children[static_cast<size_t>(i)];
    const std::string name = "child " + std::to_string(child);
    findings.expect(openDevice(child, nullptr) != nullptr, name + " cannot be opened", where);
    findings.expect(distinct.insert(child).second, name + " is listed twice", where);
    findings.expect(CvxIsFusionDevice(child) != Success, name + " is a fusion device", where);
    findings.expect(CvxFusionDeviceCheckChildren(number, 1, &child) != Success, name + " would be added again", where);
  }
}

}  // namespace

bool expectStable(Array* array, Findings& findings, const std::string& where) {
  if (array == nullptr) return true;
  const int32_t length = Array_getLength(array);
  const std::string count = std::to_string(length);
  if (!findings.expect(length >= 0 && length <= MostElements, "length " + count, where)) return false;
  const int32_t again = Array_getLength(array);
  if (!findings.expect(again == length, "length " + count + ", and " + std::to_string(again) + " when requested again",
                       where))
    return false;
  const std::vector<void*> elements = elementsOf(array);
  return findings.expect(std::cmp_equal(elements.size(), length),
                         "element " + std::to_string(elements.size()) + " of " + count + " is null", where) &&
         findings.expect(elementsOf(array) == elements, "other addresses when requested again", where) &&
         findings.expect(Array_getLength(array) == length, "another length after its elements were read", where);
}

void expectDistinctDevices(Findings& findings) {
  std::set<std::wstring> seen;
  for (const std::wstring& description : listedDescriptions()) {
    const std::string where = placeOf(description) + " in the list of installed devices";
    findings.expect(!description.empty(), "an empty description", where);
    findings.expect(description.size() < DescriptionCapacity,
                    std::to_string(description.size()) + " characters, more than the 63 that a record holds", where);
    findings.expect(seen.insert(description).second, "two devices of one description", where);
  }
}

void expectListedChildren(int32_t number, Findings& findings, const std::string& where) {
  const Listing listing(number, MostFusionChildren);
  if (!findings.expect(listing.status == Success, "children: status " + show(listing.status), where)) return;
  const std::string count = std::to_string(listing.count);
  if (!findings.expect(listing.count > 0 && listing.count <= MostFusionChildren, count + " children", where)) return;
  findings.expect(listing.isUntouchedFrom(listing.count), "writes behind the " + count + " children that it counts",
                  where);
  checkChildren(number, listing, findings, where);
  findings.expect(CvxFusionDeviceCheckChildren(number, 1, &UnknownNumber) != Success,
                  "would add a child that is not there", where);
  if (listing.count == 1) return;
  const Listing tooFew(number, 1);
  findings.expect(tooFew.status != Success, "lists " + count + " children in the room for 1", where);
  findings.expect(tooFew.isUntouchedFrom(1), "writes more children than there is room for", where);
}

void expectNoFusionDevice(int32_t number, Findings& findings) {
  const std::string where = "number " + std::to_string(number) + ", which is no fusion device";
  findings.expect(CvxIsFusionDevice(number) != Success, "is reported as a fusion device", where);
  for (const int32_t capacity : {1, MostFusionChildren}) {
    const Listing listing(number, capacity);
    findings.expect(listing.status != Success, "has children", where);
    findings.expect(listing.isUntouchedFrom(capacity), "writes more children than there is room for", where);
  }
  findings.expect(CvxFusionDeviceCheckChildren(number, 1, &UnknownNumber) != Success, "would add a child", where);
}

}  // namespace compliance
