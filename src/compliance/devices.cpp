#include "compliance/devices.h"

#include <algorithm>
#include <cstddef>

namespace compliance {

namespace {

constexpr int32_t MostChildren = 256;

}  // namespace

OpenDevice openDevice(int32_t number, const wchar_t* description) {
  return OpenDevice(DeviceCtrl_Create(number, description, AccessDevice));
}

OpenControl openControl(Scenario scenario, DeviceCtrl* device) {
  OpenControl control(DaqCtrlBase_Create(scenario));
  if (control == nullptr) return nullptr;
  DeviceInformation record{DeviceCtrl_getDeviceNumber(device), AccessDevice, 0, {}};
  if (failed(DaqCtrlBase_setSelectedDevice(control.get(), &record))) return nullptr;
  return control;
}

std::vector<std::wstring> listedDescriptions() {
  std::vector<std::wstring> descriptions;
  for (const void* const node : elementsOf(DeviceCtrl_getInstalledDevices())) {
    const auto* const text = static_cast<const char*>(node) + offsetof(InstalledDeviceNode, Description);
    descriptions.emplace_back(reinterpret_cast<const wchar_t*>(text));
  }
  return descriptions;
}

std::wstring descriptionOf(DeviceCtrl* device) {
  std::wstring text(LargeCapacity, L'\0');
  if (failed(DeviceCtrl_getDescription(device, LargeCapacity, text.data()))) return L"";
  return text.substr(0, text.find(L'\0'));
}

std::vector<void*> elementsOf(Array* array) {
  std::vector<void*> elements;
  const int32_t length = array == nullptr ? 0 : Array_getLength(array);
  for (int32_t i = 0; i < length; ++i) {
    void* const element = Array_getItem(array, i);
    if (element == nullptr) break;
    elements.push_back(element);
  }
  return elements;
}

void forEachDevice(Findings& findings, const std::function<void(DeviceCtrl*, const std::string&)>& visit) {
  const std::vector<std::wstring> descriptions = listedDescriptions();
  findings.expect(!descriptions.empty(), "no device to check", "list of installed devices");
  for (const std::wstring& description : descriptions) {
    const std::string where = placeOf(description);
    const OpenDevice device = openDevice(description);
    if (findings.expect(device != nullptr, "cannot be opened by its description", where)) visit(device.get(), where);
  }
}

std::vector<int32_t> childrenOf(int32_t fusionNumber) {
  std::vector<int32_t> children(MostChildren, -1);
  int32_t count = MostChildren;
  const bool listed = CvxFusionDeviceGetChildren(fusionNumber, &count, children.data()) == Success;
  children.resize(listed ? static_cast<size_t>(std::clamp(count, 0, MostChildren)) : 0);
  return children;
}

std::string placeOf(std::wstring_view description) { return "device " + show(std::wstring(description).c_str()); }

}  // namespace compliance
