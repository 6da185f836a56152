// Ways to the devices of the library under test, and texts that name what was found there.
#pragma once

#include <velq/velq.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "compliance/findings.h"
#include "text/escaped.h"

namespace compliance {

using namespace Automation::Velq;

/// Far from every number and description that a library may give a device.
inline constexpr int32_t UnknownNumber = INT32_MAX;
inline constexpr const wchar_t* UnknownDescription = L"velq-compliance: no such device";

/// More characters than any text that a library fills.
inline constexpr int32_t LargeCapacity = 1024;

/// What buffers are filled with beforehand, so that it shows what was written: no character.
inline constexpr wchar_t Filler = 0x5A5A5A5A;

inline constexpr Scenario Scenarios[] = {ScenarioFirmware, ScenarioCalibration};

struct Disposer {
  void operator()(DeviceCtrl* device) const { DeviceCtrl_dispose(device); }
  void operator()(DaqCtrlBase* control) const { DaqCtrlBase_dispose(control); }
};

/// Null, or a device or control that is disposed of at the end of its life.
using OpenDevice = std::unique_ptr<DeviceCtrl, Disposer>;
using OpenControl = std::unique_ptr<DaqCtrlBase, Disposer>;

OpenDevice openDevice(int32_t number, const wchar_t* description, AccessMode mode = AccessDevice);
inline OpenDevice openDevice(const std::wstring& description) { return openDevice(-1, description.c_str()); }

/// What names a device to a control. The description is cut to the record's room.
DeviceInformation recordFor(int32_t number, const std::wstring& description, AccessMode mode = AccessDevice);

/// A control of the scenario's kind, bound to the device; null when the library refuses either.
OpenControl openControl(Scenario scenario, int32_t number);

/// The chips or solutions of a control, as its scenario has it.
Array* itemsOf(Scenario scenario, DaqCtrlBase* control);

/// The descriptions in a list of devices, up to the first node that is null; empty without a list.
std::vector<std::wstring> descriptionsIn(Array* devices);
inline std::vector<std::wstring> listedDescriptions() { return descriptionsIn(DeviceCtrl_getInstalledDevices()); }

/// The numbers of those that can be opened, in their order.
std::vector<int32_t> listedNumbers();

/// A number above all that are listed.
int32_t unusedNumber();

/// The description as the device tells it, empty when it tells none.
std::wstring descriptionOf(DeviceCtrl* device);

/// The elements of an array up to its length or the first null; none of a null array.
std::vector<void*> elementsOf(Array* array);

template <typename Value>
std::vector<Value> valuesOf(Array* array) {
  std::vector<Value> values;
  for (const void* const value : elementsOf(array)) values.push_back(*static_cast<const Value*>(value));
  return values;
}

/// Opens every listed device by its description and hands it over with words for where it is. One that does not open
/// is a finding.
void forEachDevice(Findings& findings, const std::function<void(DeviceCtrl* device, const std::string& where)>& visit);

/// The children of a fusion device in order of their numbers; empty when it has none or tells of none.
std::vector<int32_t> childrenOf(int32_t fusionNumber);

/// As reports show them.
inline std::string show(ErrorCode status) { return text::hexadecimal(status); }
inline std::string show(const wchar_t* wide) { return text::escaped(wide); }
inline std::string show(const std::wstring& wide) { return text::escaped(wide.c_str()); }
std::string show(const std::vector<int32_t>& numbers);

/// "device "Description""
inline std::string placeOf(const std::wstring& description) { return "device " + show(description); }

/// "firmware control"
inline std::string nameOf(Scenario scenario) {
  return scenario == ScenarioFirmware ? "firmware control" : "calibration control";
}

}  // namespace compliance
