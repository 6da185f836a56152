#include "compliance/devices/restoration.h"

#include <algorithm>

namespace compliance {

namespace {

std::vector<int32_t> without(std::vector<int32_t> numbers, const std::vector<int32_t>& others) {
  std::erase_if(numbers, [&](int32_t n) { return std::count(others.begin(), others.end(), n) > 0; });
  return numbers;
}

// Before the names: a new fusion device has to have its number before it is renamed.
void restoreGroups(const Snapshot& before) {
  for (const int32_t number : listedNumbers()) {
    const std::vector<int32_t> added = without(sortedChildrenOf(number), numbersIn(before, childrenFact(number)));
    if (!added.empty()) callWith(added, CvxFusionDeviceRemoveChildren, number);
  }
  for (int32_t number : numbersIn(before)) {
    const std::vector<int32_t> removed = without(numbersIn(before, childrenFact(number)), sortedChildrenOf(number));
    if (removed.empty()) continue;
    if (CvxIsFusionDevice(number) == Success)
      callWith(removed, CvxFusionDeviceAddChildren, number);
    else
      CvxFusionDeviceCreate(static_cast<int32_t>(removed.size()), removed.data(), &number);
  }
}

void restoreDevice(const Snapshot& before, int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  if (device == nullptr) return;
  const std::wstring description = text::unescaped(before.at(descriptionFact(number)));
  const int32_t id = std::stoi(before.at(boardIdFact(number)));
  for (const bool countsTerminator : {true, false})
    if (descriptionOf(device.get()) != description) setDescription(device.get(), description, countsTerminator);
  if (DeviceCtrl_getBoardId(device.get()) != id) DeviceCtrl_setBoardId(device.get(), id);
}

}  // namespace

std::map<std::string, Difference> alterations(const Snapshot& before, const Snapshot& now) {
  std::map<std::string, Difference> all = differences(before, now);
  std::erase_if(all, [](const auto& difference) {
    const std::string& fact = difference.first;
    return fact != OrderFact && !fact.ends_with(": description") && !fact.ends_with(": board id") &&
           !fact.ends_with(": children");
  });
  return all;
}

void restoreDevices(const Snapshot& before) {
  restoreGroups(before);
  for (const int32_t number : numbersIn(before)) restoreDevice(before, number);
}

}  // namespace compliance
