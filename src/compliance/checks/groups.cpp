#include "compliance/checks/groups.h"

#include <algorithm>

namespace compliance {

using namespace Automation::Velq;

namespace {

int32_t countOf(const Children& children) { return static_cast<int32_t>(children.size()); }

Children sorted(const std::set<int32_t>& children) { return {children.begin(), children.end()}; }

}  // namespace

Groups::Groups(const CheckContext& context, Findings& findings) : context_(context), findings_(findings) {}

Groups::~Groups() {
  for (const int32_t number : used_) {
    const Children left = childrenOf(number);
    if (!left.empty()) CvxFusionDeviceRemoveChildren(number, countOf(left), left.data());
  }
}

std::optional<int32_t> Groups::create(const Children& children) {
  const std::string where = "fusion device of " + show(children);
  int32_t number = 0;
  const ErrorCode status = CvxFusionDeviceCreate(countOf(children), children.data(), &number);
  if (status == Success) {
    // A number that another device has would make two devices one for tools.
    const bool isNew = number >= 0 && std::count(devices_.begin(), devices_.end(), number) == 0;
    if (!findings_.expect(isNew && !groups_.contains(number), "gets the number " + std::to_string(number), where)) {
      CvxFusionDeviceRemoveChildren(number, countOf(children), children.data());
      return std::nullopt;
    }
    groups_[number] = {children.begin(), children.end()};
    used_.insert(number);
  } else {
    findings_.expect(status == ErrorCannotFuse,
                     "is refused with status " + show(status) + ", after which tools go on with device 0", where);
  }
  look("the creation of a " + where + " with status " + show(status));
  return status == Success ? std::optional(number) : std::nullopt;
}

void Groups::expectNoGroupOf(const Children& children) {
  const std::optional<int32_t> number = create(children);
  if (!findings_.expect(!number, "is created", "fusion device of " + show(children))) remove(*number, children);
}

bool Groups::add(int32_t number, const Children& added) {
  const ErrorCode check = CvxFusionDeviceCheckChildren(number, countOf(added), added.data());
  look("a look whether it would add " + show(added));
  const ErrorCode status = CvxFusionDeviceAddChildren(number, countOf(added), added.data());
  findings_.expect((check == Success) == (status == Success),
                   "adds " + show(added) + " with status " + show(status) + ", but the check returns " + show(check),
                   placeOf(number));
  if (status == Success) groups_[number].insert(added.begin(), added.end());
  look("a request to add " + show(added) + " with status " + show(status));
  return status == Success;
}

void Groups::expectNotAdded(int32_t number, const Children& added) {
  findings_.expect(CvxFusionDeviceCheckChildren(number, countOf(added), added.data()) != Success,
                   "would add " + show(added), placeOf(number));
  findings_.expect(CvxFusionDeviceAddChildren(number, countOf(added), added.data()) != Success, "adds " + show(added),
                   placeOf(number));
  look("a request to add " + show(added));
}

void Groups::remove(int32_t number, const Children& removed) {
  const ErrorCode status = CvxFusionDeviceRemoveChildren(number, countOf(removed), removed.data());
  findings_.expect(status == Success, "does not remove " + show(removed) + ", status " + show(status), placeOf(number));
  if (status == Success) {
    for (const int32_t child : removed) groups_[number].erase(child);
    if (groups_[number].empty()) groups_.erase(number);
  }
  look("the removal of " + show(removed));
}

void Groups::expectNotRemoved(int32_t number, const Children& removed) {
  findings_.expect(CvxFusionDeviceRemoveChildren(number, countOf(removed), removed.data()) != Success,
                   "removes " + show(removed), placeOf(number));
  look("a request to remove " + show(removed));
}

void Groups::look(const std::string& after) {
  for (const int32_t number : used_) {
    const std::string where = placeOf(number) + " after " + after;
    const bool isThere = groups_.contains(number);
    findings_.expect((CvxIsFusionDevice(number) == Success) == isThere,
                     isThere ? "is not reported as a fusion device" : "is a fusion device without a child", where);
    const Children wanted = isThere ? sorted(groups_[number]) : Children(), found = childrenOf(number);
    findings_.expect(found == wanted, "has the children " + show(found) + ", not " + show(wanted), where);
    const OpenDevice opened = openDevice(number, nullptr, AccessFusion);
    findings_.expect((opened != nullptr) == isThere,
                     isThere ? "cannot be opened by its number" : "can be opened without a child", where);
    if (opened == nullptr) {
      // The next group of this number has a description of its own.
      descriptions_.erase(number);
      continue;
    }
    const std::wstring description = descriptionOf(opened.get());
    const std::wstring& before = descriptions_.emplace(number, description).first->second;
    findings_.expect(description == before, "is described " + show(description) + ", not " + show(before), where);
  }
  const size_t count = listedDescriptions().size();
  findings_.expect(count == devices_.size() + groups_.size(), std::to_string(count) + " devices are listed",
                   "after " + after);
}

void Groups::lookAtAll(const std::string& after) {
  expectAsWanted(takeSnapshot(), "after " + after);
  expectAsWanted(context_.next.look(), "in the next process after " + after);
}

void Groups::expectAsWanted(Snapshot found, const std::string& when) {
  Snapshot wanted = context_.before;
  for (const auto& [number, children] : groups_) {
    const std::string listed = found[childrenFact(number)];
    findings_.expect(listed == show(sorted(children)), "has the children " + listed + ", not " + show(sorted(children)),
                     placeOf(number) + ", " + when);
    wanted = without(number, wanted);
    found = without(number, found);
  }
  const std::string difference = firstDifference(wanted, found);
  findings_.expect(difference.empty(), difference, when);
}

}  // namespace compliance
