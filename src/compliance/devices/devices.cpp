#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

std::vector<int32_t> listedNumbers() {
  std::vector<int32_t> numbers;
  for (const std::wstring& description : listedDescriptions())
    if (const OpenDevice device = openDevice(description)) numbers.push_back(DeviceCtrl_getDeviceNumber(device.get()));
  return numbers;
}

std::vector<int32_t> childrenOf(int32_t fusionNumber) {
  std::vector<int32_t> children = reading::childrenOf(fusionNumber);
  std::sort(children.begin(), children.end());
  return children;
}

std::set<int32_t> unusedNumbers() {
  const std::vector<int32_t> listed = listedNumbers();
  std::set<int32_t> numbers{UnknownNumber};
  for (const int32_t number : listed) {
    if (number > 0) numbers.insert(number - 1);
    if (number < INT32_MAX) numbers.insert(number + 1);
  }
  for (const int32_t number : listed) numbers.erase(number);
  return numbers;
}

void forEachDevice(Findings& findings, const std::function<void(DeviceCtrl*, const std::string&)>& visit) {
  for (const std::wstring& description : listedDescriptions()) {
    const std::string where = placeOf(description);
    const OpenDevice device = openDevice(description);
    if (findings.expect(device != nullptr, "cannot be opened by its description", where)) visit(device.get(), where);
  }
}

std::string show(const std::vector<int32_t>& numbers) {
  std::string shown;
  for (const int32_t number : numbers) shown += (shown.empty() ? "" : ", ") + std::to_string(number);
  return "[" + shown + "]";
}

}  // namespace compliance
