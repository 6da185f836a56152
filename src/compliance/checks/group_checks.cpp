// Making, extending and dissolving a fusion device.
#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/snapshot.h"

namespace compliance {

namespace {

using Children = std::vector<int32_t>;

int32_t countOf(const Children& children) { return static_cast<int32_t>(children.size()); }

// What is tried on groups. All else has to stay as it was before.
class Groups {
 public:
  Groups(const CheckContext& context, Findings& findings) : context_(context), findings_(findings) {}

  void tryAll();

 private:
  std::optional<int32_t> make(const Children& children);
  void expectRefusedCreation(const Children& children, const std::string& what);
  void expectGroup(int32_t number, const Children& children, const std::string& after);
  void expectOnlyBefore(const Snapshot& found, int32_t number, const std::string& after);
  void tryRefusals(int32_t number, const Children& children);
  void tryExtension(int32_t number, const Children& children);
  void tryRename(int32_t number);
  void remove(int32_t number, const Children& present, const Children& gone);
  void examine(int32_t number, const Children& children);

  const CheckContext& context_;
  Findings& findings_;
  const Snapshot before_ = takeSnapshot();
  const Children listed_ = listedNumbers();
  Array* const list_ = DeviceCtrl_getInstalledDevices();
  const std::vector<std::wstring> listedBefore_ = descriptionsIn(list_);
};

std::string placeOf(int32_t number) { return "fusion device " + std::to_string(number); }

// Makes a group, or expects that the refusal is the one that tools understand.
std::optional<int32_t> Groups::make(const Children& children) {
  const std::string where = "fusion device of " + show(children);
  int32_t number = 0;
  const ErrorCode status = CvxFusionDeviceCreate(countOf(children), children.data(), &number);
  if (status == Success) {
    const bool isNew = std::count(listed_.begin(), listed_.end(), number) == 0;
    if (findings_.expect(isNew && number >= 0, "gets the number " + std::to_string(number), where)) return number;
    return std::nullopt;
  }
  findings_.expect(status == ErrorCannotFuse,
                   "is refused with status " + show(status) + ", after which tools go on with device 0", where);
  const std::string difference = firstDifference(before_, takeSnapshot());
  findings_.expect(difference.empty(), difference + ", after a refused creation", where);
  return std::nullopt;
}

void Groups::expectRefusedCreation(const Children& children, const std::string& what) {
  const std::optional<int32_t> number = make(children);
  if (!number) return;
  findings_.expect(false, "is made of " + what, placeOf(*number));
  CvxFusionDeviceRemoveChildren(*number, countOf(children), children.data());
}

void Groups::expectOnlyBefore(const Snapshot& found, int32_t number, const std::string& after) {
  const std::string difference = firstDifference(without(number, before_), without(number, found));
  findings_.expect(difference.empty(), difference + ", after " + after, placeOf(number));
}

void Groups::expectGroup(int32_t number, const Children& children, const std::string& after) {
  const std::string where = placeOf(number) + " after " + after;
  const OpenDevice device = openDevice(number, nullptr, AccessFusion);
  if (findings_.expect(device != nullptr, "cannot be opened by its number", where)) {
    const Children now = listedNumbers();
    findings_.expect(std::count(now.begin(), now.end(), number) == 1, "is not listed", where);
  }
  findings_.expect(CvxIsFusionDevice(number) == Success, "is not called a fusion device", where);
  const Children present = childrenOf(number);
  findings_.expect(present == children, "has the children " + show(present) + ", not " + show(children), where);
  expectOnlyBefore(takeSnapshot(), number, after);
}

// Devices that cannot be added, taken out or grouped.
void Groups::tryRefusals(int32_t number, const Children& children) {
  const int32_t own = children.front();
  for (const int32_t child : {UnknownNumber, -1, own, number}) {
    const std::string shown = std::to_string(child);
    findings_.expect(CvxFusionDeviceCheckChildren(number, 1, &child) != Success, "would take " + shown,
                     placeOf(number));
    findings_.expect(CvxFusionDeviceAddChildren(number, 1, &child) != Success, "takes " + shown, placeOf(number));
    expectGroup(number, children, "being asked to take " + shown);
    if (child == own) continue;
    findings_.expect(CvxFusionDeviceRemoveChildren(number, 1, &child) != Success, "lets " + shown + " go",
                     placeOf(number));
    expectGroup(number, children, "being asked to let " + shown + " go");
  }
  const Children half{own, UnknownNumber};
  findings_.expect(CvxFusionDeviceRemoveChildren(number, countOf(half), half.data()) != Success,
                   "lets " + show(half) + " go", placeOf(number));
  expectGroup(number, children, "being asked to let " + show(half) + " go");
  int32_t other = 0;
  for (const Children& taken : {Children{own}, Children{number}}) {
    const ErrorCode status = CvxFusionDeviceCreate(1, taken.data(), &other);
    findings_.expect(status == ErrorCannotFuse, "a group of its child or of itself: status " + show(status),
                     placeOf(number));
    expectGroup(number, children, "another group of " + show(taken) + " was refused");
  }
}

void Groups::tryExtension(int32_t number, const Children& children) {
  for (const int32_t child : listed_) {
    if (std::count(children.begin(), children.end(), child) > 0) continue;
    const Children half{child, UnknownNumber};
    findings_.expect(CvxFusionDeviceAddChildren(number, countOf(half), half.data()) != Success, "takes " + show(half),
                     placeOf(number));
    expectGroup(number, children, "being asked to take " + show(half));
    const ErrorCode check = CvxFusionDeviceCheckChildren(number, 1, &child);
    expectGroup(number, children, "a look whether it would take " + std::to_string(child));
    const ErrorCode status = CvxFusionDeviceAddChildren(number, 1, &child);
    findings_.expect(
        (check == Success) == (status == Success),
        "takes " + std::to_string(child) + " with status " + show(status) + ", but the check says " + show(check),
        placeOf(number));
    Children present = children;
    if (status == Success) present.push_back(child);
    std::sort(present.begin(), present.end());
    expectGroup(number, present, "being asked to take " + std::to_string(child));
    if (status == Success) return remove(number, present, {child});
  }
}

// As tools do after the creation: without the terminator in the count.
void Groups::tryRename(int32_t number) {
  const std::wstring name = L"velq-compliance group";
  const OpenDevice device = openDevice(number, nullptr, AccessFusion);
  if (device == nullptr) return;
  const std::wstring before = descriptionOf(device.get());
  const ErrorCode status = DeviceCtrl_setDescription(device.get(), static_cast<int32_t>(name.size()), name.c_str());
  const std::wstring& wanted = status == Success ? name : before;
  findings_.expect(descriptionOf(device.get()) == wanted && openDevice(wanted) != nullptr,
                   "is not described " + show(wanted) + " after a change with status " + show(status), placeOf(number));
}

void Groups::remove(int32_t number, const Children& present, const Children& gone) {
  const std::string where = placeOf(number);
  const ErrorCode status = CvxFusionDeviceRemoveChildren(number, countOf(gone), gone.data());
  findings_.expect(status == Success, "does not let " + show(gone) + " go, status " + show(status), where);
  Children left;
  std::copy_if(present.begin(), present.end(), std::back_inserter(left),
               [&](int32_t child) { return std::count(gone.begin(), gone.end(), child) == 0; });
  if (!left.empty()) return expectGroup(number, left, "letting " + show(gone) + " go");
  findings_.expect(CvxIsFusionDevice(number) != Success, "is a fusion device without its last child", where);
  findings_.expect(openDevice(number, nullptr) == nullptr, "can be opened without its last child", where);
  const std::string difference = firstDifference(before_, takeSnapshot());
  findings_.expect(difference.empty(), difference + ", after its end", where);
}

void Groups::examine(int32_t number, const Children& children) {
  expectGroup(number, children, "its creation");
  findings_.expect(descriptionsIn(list_) == listedBefore_, "a list that was taken before its creation reads otherwise",
                   placeOf(number));
  expectOnlyBefore(context_.next.look(), number, "its creation, in the next process");
  expectListedChildren(number, findings_, placeOf(number));
  expectDistinctDevices(findings_);
  tryRefusals(number, children);
  tryExtension(number, children);
  tryRename(number);
  if (children.size() > 1) {
    remove(number, children, {children.front()});
    const Children others{children.begin() + 1, children.end()};
    remove(number, others, others);
  } else {
    remove(number, children, children);
  }
  const std::string difference = firstDifference(before_, context_.next.look());
  findings_.expect(difference.empty(), difference + ", in the next process after its end", placeOf(number));
}

void Groups::tryAll() {
  expectRefusedCreation({UnknownNumber}, "a device that is not there");
  expectRefusedCreation({-1}, "a device that is not there");
  for (const int32_t number : listed_)
    if (CvxIsFusionDevice(number) == Success) tryRefusals(number, childrenOf(number));
  bool isMade = false;
  for (const int32_t first : listed_) {
    expectRefusedCreation({first, UnknownNumber}, "a device that is not there");
    expectRefusedCreation({first, first}, "one device twice");
    for (const int32_t second : listed_) {
      if (second <= first) continue;
      const Children children{first, second};
      const std::optional<int32_t> number = make(children);
      if (!number) continue;
      if (!isMade) examine(*number, children);
      // As tools do: all at once.
      if (const auto again = isMade ? number : make(children)) remove(*again, children, children);
      isMade = true;
    }
  }
  if (!isMade) findings_.refuse("fusion devices of two devices");
}

}  // namespace

void checkGroups(const CheckContext& context, Findings& findings) { Groups(context, findings).tryAll(); }

}  // namespace compliance
