#include "compliance/checks/groups.h"

#include <algorithm>

namespace compliance {

Groups::~Groups() {
  for (const int32_t number : used_)
    if (const Children left = sortedChildrenOf(number); !left.empty())
      callWith(left, CvxFusionDeviceRemoveChildren, number);
}

std::optional<int32_t> Groups::create(const Children& children) {
  const std::string what = "fusion device of " + show(children);
  const Findings here = findings().at(what);
  int32_t number = 0;
  const ErrorCode status = CvxFusionDeviceCreate(static_cast<int32_t>(children.size()), children.data(), &number);
  // A number that another device has would make two devices one for tools.
  const bool isNew =
      number >= 0 && std::count(devices_.begin(), devices_.end(), number) == 0 && !groups_.contains(number);
  const bool isCreated = status == Success && here.expect(isNew, "gets the number " + std::to_string(number));
  if (isCreated) {
    groups_[number].children = {children.begin(), children.end()};
    used_.insert(number);
  } else if (status == Success) {
    callWith(children, CvxFusionDeviceRemoveChildren, number);
  } else {
    here.expect(status == ErrorCannotFuse,
                "is refused with status " + show(status) + ", after which tools go on with device 0");
  }
  look("the creation of a " + what + " with status " + show(status));
  return isCreated ? std::optional(number) : std::nullopt;
}

void Groups::expectNoGroupOf(const Children& children) {
  const std::optional<int32_t> number = create(children);
  if (!findings().at("fusion device of " + show(children)).expect(!number, "is created")) remove(*number, children);
}

bool Groups::add(int32_t number, const Children& added) {
  const ErrorCode check = callWith(added, CvxFusionDeviceCheckChildren, number);
  look("a look whether it would add " + show(added));
  const ErrorCode status = callWith(added, CvxFusionDeviceAddChildren, number);
  at(number).expect((check == Success) == (status == Success),
                    "adds " + show(added) + " with status " + show(status) + ", but the check returns " + show(check));
  if (status == Success) groups_[number].children.insert(added.begin(), added.end());
  look("a request to add " + show(added) + " with status " + show(status));
  return status == Success;
}

void Groups::expectNotAdded(int32_t number, const Children& added) {
  at(number).expect(!add(number, added), "adds " + show(added));
}

void Groups::remove(int32_t number, const Children& removed) {
  const ErrorCode status = callWith(removed, CvxFusionDeviceRemoveChildren, number);
  if (at(number).expect(status == Success, "does not remove " + show(removed) + ", status " + show(status))) {
    Group& group = groups_[number];
    for (const int32_t child : removed) group.children.erase(child);
    if (group.children.empty()) groups_.erase(number);
  }
  look("the removal of " + show(removed));
}

void Groups::expectNotRemoved(int32_t number, const Children& removed) {
  at(number).expect(callWith(removed, CvxFusionDeviceRemoveChildren, number) != Success, "removes " + show(removed));
  look("a request to remove " + show(removed));
}

void Groups::look(const std::string& after) {
  for (const int32_t number : used_) {
    const Findings here = at(number).at("after " + after);
    const auto group = groups_.find(number);
    const bool isThere = group != groups_.end();
    here.expect((CvxIsFusionDevice(number) == Success) == isThere,
                isThere ? "is not reported as a fusion device" : "is a fusion device without a child");
    const Children wanted = isThere ? group->second.sortedChildren() : Children(), found = sortedChildrenOf(number);
    here.expect(found == wanted, "has the children " + show(found) + ", not " + show(wanted));
    const OpenDevice opened = openDevice(number, nullptr, AccessFusion);
    here.expect((opened != nullptr) == isThere,
                isThere ? "cannot be opened by its number" : "can be opened without a child");
    if (opened == nullptr || !isThere) continue;
    const std::wstring description = descriptionOf(opened.get());
    std::wstring& before = group->second.description;
    if (before.empty()) before = description;
    here.expect(description == before, "is described " + show(description) + ", not " + show(before));
  }
  const size_t count = listedDescriptions().size();
  findings()
      .at("after " + after)
      .expect(count == devices_.size() + groups_.size(), std::to_string(count) + " devices are listed");
}

void Groups::lookAtAll(const std::string& after) const {
  expectAsWanted(takeSnapshot(), "after " + after);
  expectAsWanted(context_.next.look(), "in the next process after " + after);
}

void Groups::expectAsWanted(Snapshot found, const std::string& when) const {
  Snapshot wanted = context_.before;
  for (const auto& [number, group] : groups_) {
    const std::string listed = found[childrenFact(number)], children = show(group.sortedChildren());
    at(number).at(when).expect(listed == children, "has the children " + listed + ", not " + children);
    wanted = without(number, wanted);
    found = without(number, found);
  }
  expectSame(wanted, found, findings().at(when));
}

}  // namespace compliance
