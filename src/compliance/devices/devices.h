// Ways to the devices of the library under test, and texts that name what was found there.
#pragma once

#include <velq/velq.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "compliance/process/report.h"
#include "reading/devices.h"
#include "text/escaped.h"

namespace compliance {

using namespace Automation::Velq;
using namespace reading;

/// A number and a description that no device has.
inline constexpr int32_t UnknownNumber = INT32_MAX;
inline constexpr const wchar_t* UnknownDescription = L"velq-compliance: no such device";

/// What buffers are filled with beforehand, so that it shows what was written: no character.
inline constexpr wchar_t Filler = 0x5A5A5A5A;

inline constexpr Scenario Scenarios[] = {ScenarioFirmware, ScenarioCalibration};

/// The numbers of those that can be opened, in their order.
std::vector<int32_t> listedNumbers();

/// The children of a fusion device in order of their numbers; empty when it has none or the library refuses.
std::vector<int32_t> sortedChildrenOf(int32_t fusionNumber);

/// Numbers that no listed device has: all around those that are listed, and far from them.
std::set<int32_t> unusedNumbers();

/// Changes the description. Tools count the terminator when they rename, and do not when they create a fusion device.
ErrorCode setDescription(DeviceCtrl* device, const std::wstring& text, bool countsTerminator = true);

/// The operations that take children of a fusion device.
using ChildrenOperation = decltype(&CvxFusionDeviceAddChildren);

/// Calls such an operation.
inline ErrorCode callWith(const std::vector<int32_t>& children, ChildrenOperation operation, int32_t fusionNumber) {
  return operation(fusionNumber, static_cast<int32_t>(children.size()), children.data());
}

/// Opens every listed device by its description, and visits it. One that does not open is a finding.
void forEachDevice(const Findings& findings,
                   const std::function<void(DeviceCtrl* device, const Findings& here)>& visit);

/// Binds a control to each listed device in turn, to the first twice more at the end, and visits it each time. Returns
/// it; null when the library binds none.
OpenControl bindToEach(Scenario scenario,
                       const std::function<void(DaqCtrlBase* control, int32_t number, bool isBound)>& visit);

/// As reports show them.
inline std::string show(ErrorCode status) { return text::hexadecimal(status); }
inline std::string show(const wchar_t* wide) { return text::escaped(wide); }
inline std::string show(const std::wstring& wide) { return text::escaped(wide.c_str()); }
std::string show(const std::vector<int32_t>& numbers);

/// "device "Description""
inline std::string placeOf(const std::wstring& description) { return "device " + show(description); }

}  // namespace compliance
