#include "compliance/devices/devices.h"

namespace compliance {

std::vector<int32_t> listedNumbers() {
  std::vector<int32_t> numbers;
  for (const std::wstring& description : listedDescriptions())
    if (const OpenDevice device = openDevice(description)) numbers.push_back(DeviceCtrl_getDeviceNumber(device.get()));
  return numbers;
}

std::vector<int32_t> sortedChildrenOf(int32_t fusionNumber) {
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

ErrorCode setDescription(DeviceCtrl* device, const std::wstring& text, bool countsTerminator) {
  return DeviceCtrl_setDescription(device, static_cast<int32_t>(text.size()) + countsTerminator, text.c_str());
}

void forEachDevice(const Findings& findings, const std::function<void(DeviceCtrl*, const Findings&)>& visit) {
  for (const std::wstring& description : listedDescriptions()) {
    const Findings here = findings.at(placeOf(description));
    const OpenDevice device = openDevice(description);
    if (here.expect(device != nullptr, "cannot be opened by its description")) visit(device.get(), here);
  }
}

OpenControl bindToEach(Scenario scenario, const std::function<void(DaqCtrlBase*, int32_t, bool)>& visit) {
  std::vector<int32_t> numbers = listedNumbers();
  // Where there is one device, too, and one after itself.
  if (!numbers.empty()) numbers.insert(numbers.end(), 2, numbers.front());
  OpenControl control;
  for (const int32_t number : numbers) {
    const bool isNew = control == nullptr;
    if (isNew) control = openControl(scenario, number);
    if (control != nullptr) visit(control.get(), number, isNew || reading::bind(control.get(), number));
  }
  return control;
}

std::string show(const std::vector<int32_t>& numbers) {
  std::string shown;
  for (const int32_t number : numbers) shown += (shown.empty() ? "" : ", ") + std::to_string(number);
  return "[" + shown + "]";
}

}  // namespace compliance
