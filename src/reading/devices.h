// Ways to what a device library lists, for programs that look at all of it. Through the boundary only.
#pragma once

#include <velq/velq.h>

#include <memory>
#include <string>
#include <vector>

namespace reading {

using Automation::Velq::AccessDevice;
using Automation::Velq::AccessMode;
using Automation::Velq::Array;
using Automation::Velq::DaqCtrlBase;
using Automation::Velq::DeviceCtrl;
using Automation::Velq::DeviceInformation;
using Automation::Velq::Scenario;

/// More characters than any string that a library fills.
inline constexpr int32_t LargeCapacity = 1024;

struct Disposer {
  void operator()(DeviceCtrl* device) const { DeviceCtrl_dispose(device); }
  void operator()(DaqCtrlBase* control) const { DaqCtrlBase_dispose(control); }
};

/// Null, or a device or control that is disposed of at the end of its life.
using OpenDevice = std::unique_ptr<DeviceCtrl, Disposer>;
using OpenControl = std::unique_ptr<DaqCtrlBase, Disposer>;

/// Opens a device as <velq/operations.def> describes. Null when the library refuses.
OpenDevice openDevice(int32_t number, const wchar_t* description, AccessMode mode = AccessDevice);
inline OpenDevice openDevice(const std::wstring& description) { return openDevice(-1, description.c_str()); }

/// What names a device to a control. The description is cut to the record's room.
DeviceInformation recordFor(int32_t number, const std::wstring& description, AccessMode mode = AccessDevice);

/// Binds a control to the device with this number. Returns false when the library refuses.
bool bind(DaqCtrlBase* control, int32_t number);

/// A control of the scenario's kind, bound to the device; null when the library refuses either.
OpenControl openControl(Scenario scenario, int32_t number);

/// The chips or solutions of a control, as its scenario has it; null where the library returns none.
Array* itemsOf(Scenario scenario, DaqCtrlBase* control);

/// "firmware control"
inline std::string nameOf(Scenario scenario) {
  return scenario == Automation::Velq::ScenarioFirmware ? "firmware control" : "calibration control";
}

/// The descriptions in a list of devices, up to the first node that is null; empty without a list.
std::vector<std::wstring> descriptionsIn(Array* devices);
inline std::vector<std::wstring> listedDescriptions() {
  return descriptionsIn(Automation::Velq::DeviceCtrl_getInstalledDevices());
}

/// The description that the device returns; empty when it returns none.
std::wstring descriptionOf(DeviceCtrl* device);

/// The elements of an array up to its length or the first null; none of a null array.
std::vector<void*> elementsOf(Array* array);

template <typename Value>
std::vector<Value> valuesOf(Array* array) {
  std::vector<Value> values;
  for (const void* const value : elementsOf(array)) values.push_back(*static_cast<const Value*>(value));
  return values;
}

/// The children of a fusion device as it lists them; empty when it has none or the library refuses.
std::vector<int32_t> childrenOf(int32_t fusionNumber);

}  // namespace reading
