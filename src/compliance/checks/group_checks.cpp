// Creating, extending and dissolving fusion devices, in the ways that users do.
#include <algorithm>

#include "compliance/checks/groups.h"

namespace compliance {

namespace {

// With so many devices each other one is tried, even when the library reports that they cannot be grouped.
constexpr size_t MostTried = 16;

// Devices that cannot be added, removed or grouped.
void tryRefusals(Groups& groups, int32_t number, int32_t own) {
  for (const int32_t child : {UnknownNumber, -1, own, number}) {
    groups.expectNotAdded(number, {child});
    if (child != own) groups.expectNotRemoved(number, {child});
  }
  groups.expectNotRemoved(number, {own, UnknownNumber});
  groups.expectNoGroupOf({own});
  groups.expectNoGroupOf({number});
}

// As tools rename it after the creation: without the terminator in the count.
void tryChanges(Groups& groups, int32_t number, int32_t child) {
  const OpenDevice group = openDevice(number, nullptr, AccessFusion), other = openDevice(child, nullptr);
  if (group == nullptr || other == nullptr) return;
  const std::wstring own = descriptionOf(group.get()), name = L"velq-compliance group";
  const Findings here = groups.at(number);
  here.expect(setDescription(group.get(), descriptionOf(other.get()), false) != Success,
              "takes its child's description");
  here.expect(setDescription(other.get(), own) != Success, "lets its child take its description");
  const ErrorCode status = setDescription(group.get(), name, false);
  const std::wstring& wanted = status == Success ? name : own;
  here.expect(descriptionOf(group.get()) == wanted && openDevice(wanted) != nullptr,
              "is not described " + show(wanted) + " after a change with status " + show(status));
  setDescription(group.get(), own, false);
  DeviceCtrl_setBoardId(group.get(), DeviceCtrl_getBoardId(group.get()) + 1);
  groups.lookAtAll("changes of a group");
}

// A change of a child, here to what it has already, leaves the group as it is.
void tryChangesOf(int32_t child, Groups& groups) {
  const OpenDevice device = openDevice(child, nullptr);
  if (device == nullptr) return;
  setDescription(device.get(), descriptionOf(device.get()));
  groups.look("a change of the description of its child");
  DeviceCtrl_setBoardId(device.get(), DeviceCtrl_getBoardId(device.get()));
  groups.look("a change of the board id of its child");
}

// Adds one more device, together with `others`, if there is one that the group takes. Returns it.
std::optional<int32_t> extend(Groups& groups, int32_t number, int32_t own, const Children& others) {
  for (size_t i = 0; i < groups.devices().size(); ++i) {
    const int32_t device = groups.devices()[i];
    if (device == own || std::count(others.begin(), others.end(), device) > 0) continue;
    if (i >= MostTried && CvxFusionDeviceCheckChildren(number, 1, &device) != Success) continue;
    Children added = others;
    added.push_back(device);
    if (groups.add(number, added)) return device;
  }
  return std::nullopt;
}

// A group of one device has just got the partner, and ends here.
void tryWithPartner(Groups& groups, int32_t number, int32_t own, int32_t partner) {
  groups.lookAtAll("the extension of a group");
  tryChangesOf(partner, groups);
  expectListedChildren(number, groups.at(number));
  groups.remove(number, {partner});
  groups.expectNotAdded(number, {partner, UnknownNumber});
  const std::optional<int32_t> other = groups.create({partner});
  if (groups.findings()
          .at("device " + std::to_string(partner))
          .expect(other.has_value(), "can be a child beside another, but not alone")) {
    expectDistinctDevices(groups.findings());
    groups.expectNotAdded(number, {partner});
    groups.expectNotAdded(number, {*other});
    groups.expectNotRemoved(number, {partner});
    groups.remove(*other, {partner});
  }
  if (const std::optional<int32_t> third = extend(groups, number, own, {partner})) {
    groups.remove(number, {*third, own});
    groups.remove(number, {partner});
  } else {
    groups.remove(number, {own});
  }
  const Children both{own, partner};
  const std::optional<int32_t> pair = groups.create(both);
  if (groups.findings()
          .at("devices " + show(both))
          .expect(pair.has_value(), "can be grouped one after the other, but not at once"))
    groups.remove(*pair, both);
}

void examine(Groups& groups, int32_t number, int32_t own) {
  groups.lookAtAll("the creation of a group");
  expectListedChildren(number, groups.at(number));
  expectDistinctDevices(groups.findings());
  tryRefusals(groups, number, own);
  tryChanges(groups, number, own);
  tryChangesOf(own, groups);
}

// Each device alone, and the first two that can be grouped. Returns whether there are such.
bool tryOneAfterTheOther(Groups& groups) {
  bool isExamined = false, isPaired = false;
  for (const int32_t device : groups.devices()) {
    groups.expectNoGroupOf({device, UnknownNumber});
    groups.expectNoGroupOf({device, device});
    const std::optional<int32_t> number = groups.create({device});
    if (!number) continue;
    if (!std::exchange(isExamined, true)) examine(groups, *number, device);
    const std::optional<int32_t> partner = isPaired ? std::nullopt : extend(groups, *number, device, {});
    if (partner)
      tryWithPartner(groups, *number, device, *partner);
    else
      groups.remove(*number, {device});
    isPaired = isPaired || partner;
  }
  return isPaired;
}

void tryAtOnce(Groups& groups) {
  const size_t count = std::min(groups.devices().size(), MostTried);
  for (size_t i = 0; i < count; ++i)
    for (size_t k = i + 1; k < count; ++k) {
      const Children pair{groups.devices()[i], groups.devices()[k]};
      const std::optional<int32_t> number = groups.create(pair);
      if (!number) continue;
      groups.findings()
          .at("devices " + show(pair))
          .expect(false, "can be grouped at once, but not one after the other");
      return groups.remove(*number, pair);
    }
  groups.findings().at("fusion devices of two devices").refuse();
}

}  // namespace

void checkGroups(const CheckContext& context) {
  Groups groups(context);
  Array* const list = DeviceCtrl_getInstalledDevices();
  const std::vector<std::wstring> listedBefore = descriptionsIn(list);
  for (const int32_t number : groups.devices())
    if (CvxIsFusionDevice(number) == Success) tryRefusals(groups, number, sortedChildrenOf(number).front());
  if (!tryOneAfterTheOther(groups)) tryAtOnce(groups);
  for (const int32_t number : unusedNumbers()) groups.expectNoGroupOf({number});
  groups.expectNoGroupOf({-1});
  groups.lookAtAll("the end of all groups");
  context.findings.at("a list that was returned before all groups")
      .expect(descriptionsIn(list) == listedBefore, "reads otherwise");
}

}  // namespace compliance
