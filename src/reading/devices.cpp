#include "reading/devices.h"

#include <algorithm>
#include <cstddef>

namespace reading {

using namespace Automation::Velq;

OpenDevice openDevice(int32_t number, const wchar_t* description, AccessMode mode) {
  return OpenDevice(DeviceCtrl_Create(number, description, mode));
}

DeviceInformation recordFor(int32_t number, const std::wstring& description, AccessMode mode) {
  DeviceInformation record{number, mode, 0, {}};
  description.copy(record.Description, std::size(record.Description) - 1);
  return record;
}

bool bind(DaqCtrlBase* control, int32_t number) {
  // The number alone decides: several devices can have the same description.
  const DeviceInformation record = recordFor(number, L"");
  return !failed(DaqCtrlBase_setSelectedDevice(control, &record));
}

OpenControl openControl(Scenario scenario, int32_t number) {
  OpenControl control(DaqCtrlBase_Create(scenario));
  if (control == nullptr || !bind(control.get(), number)) return nullptr;
  return control;
}

Array* itemsOf(Scenario scenario, DaqCtrlBase* control) {
  return scenario == ScenarioFirmware ? FirmwareCtrls_getFirmwares(static_cast<FirmwareCtrls*>(control))
                                      : CalibrationCtrl_getSolutions(static_cast<CalibrationCtrl*>(control));
}

std::vector<std::wstring> descriptionsIn(Array* devices) {
  std::vector<std::wstring> descriptions;
  for (const void* const node : elementsOf(devices)) {
    // Not as a member of the record: a node may be shorter or longer than that.
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

std::vector<int32_t> childrenOf(int32_t fusionNumber) {
  // Twice the room, for a library that writes more.
  std::vector<int32_t> children(2 * MostFusionChildren, -1);
  int32_t count = MostFusionChildren;
  const bool listed = CvxFusionDeviceGetChildren(fusionNumber, &count, children.data()) == Success;
  children.resize(listed ? static_cast<size_t>(std::clamp(count, 0, MostFusionChildren)) : 0);
  return children;
}

}  // namespace reading
