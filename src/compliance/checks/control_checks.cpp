// Scenario controls: what they are bound to. A library may refuse to make one, and to bind it.
#include <algorithm>
#include <cwchar>
#include <set>
#include <string>

#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/snapshot.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

// Filled beforehand, so that what is left out and what is written behind it shows.
struct GuardedRecord {
  GuardedRecord() { std::fill_n(reinterpret_cast<wchar_t*>(this), sizeof *this / sizeof(wchar_t), Filler); }
  bool isGuardIntact() const {
    return std::all_of(std::begin(guard), std::end(guard), [](wchar_t c) { return c == Filler; });
  }
  std::wstring description() const { return {record.Description, wcsnlen(record.Description, DescriptionCapacity)}; }

  DeviceInformation record;
  wchar_t guard[64];
};

void expectUnbound(Scenario scenario, DaqCtrlBase* control, Findings& findings, const std::string& where) {
  findings.expect(DaqCtrlBase_getDevice(control) == nullptr, "has a device although it is not bound", where);
  findings.expect(itemsOf(scenario, control) == nullptr, "has chips or solutions although it is not bound", where);
  GuardedRecord answer;
  const ErrorCode status = DaqCtrlBase_getSelectedDevice(control, &answer.record);
  findings.expect(failed(status), "returns the record of a device although it is not bound, status " + show(status),
                  where);
  findings.expect(answer.isGuardIntact(), "writes behind the record", where);
}

void expectNoBinding(Scenario scenario, DaqCtrlBase* control, const DeviceInformation& record, Findings& findings) {
  const ErrorCode status = DaqCtrlBase_setSelectedDevice(control, &record);
  const std::string where = nameOf(scenario) + ", record of number " + std::to_string(record.DeviceNumber) + " and " +
                            show(record.Description);
  findings.expect(failed(status), "is bound to a device that is not there, status " + show(status), where);
  expectUnbound(scenario, control, findings, where);
}

void checkBound(DaqCtrlBase* control, const DeviceInformation& wanted, Findings& findings, const std::string& where) {
  GuardedRecord answer;
  const ErrorCode status = DaqCtrlBase_getSelectedDevice(control, &answer.record);
  findings.expect(!failed(status), "status " + show(status) + " for the record of the bound device", where);
  findings.expect(answer.isGuardIntact(), "writes behind the record", where);
  const auto expectField = [&](const char* field, int32_t found, int32_t expected) {
    findings.expect(found == expected, field + (" is " + std::to_string(found)) + " in the record", where);
  };
  expectField("number", answer.record.DeviceNumber, wanted.DeviceNumber);
  expectField("mode", answer.record.OpenMode, wanted.OpenMode);
  expectField("module index", answer.record.ModuleIndex, wanted.ModuleIndex);
  findings.expect(answer.description() == wanted.Description,
                  "description is " + show(answer.description()) + " in the record", where);
  DeviceCtrl* const device = DaqCtrlBase_getDevice(control);
  if (!findings.expect(device != nullptr, "has no device although it is bound", where)) return;
  findings.expect(DaqCtrlBase_getDevice(control) == device, "has another device when requested again", where);
  findings.expect(
      DeviceCtrl_getDeviceNumber(device) == wanted.DeviceNumber && descriptionOf(device) == wanted.Description,
      "has another device, " + show(descriptionOf(device)), where);
}

// A control that was bound to other devices before returns the chips or solutions that a new one does.
void expectOwnItems(Scenario scenario, DaqCtrlBase* control, int32_t number, Findings& findings,
                    const std::string& where) {
  const OpenControl other = openControl(scenario, number);
  if (other == nullptr) return;
  const std::string difference =
      firstDifference(itemFactsOf(scenario, other.get(), number), itemFactsOf(scenario, control, number));
  findings.expect(difference.empty(), difference + " as for a new control", where);
}

// Binds a new control to the device and looks at it. Returns whether the library lets it be bound.
bool tryBinding(Scenario scenario, const DeviceInformation& record, const DeviceInformation& answer, Findings& findings,
                const std::string& where) {
  const OpenControl control(DaqCtrlBase_Create(scenario));
  if (control == nullptr) return false;
  const bool isBound = !failed(DaqCtrlBase_setSelectedDevice(control.get(), &record));
  if (isBound)
    checkBound(control.get(), answer, findings, where);
  else
    expectUnbound(scenario, control.get(), findings, where);
  return isBound;
}

}  // namespace

void checkUnboundControl(const CheckContext&, Findings& findings) {
  for (const Scenario scenario : Scenarios) {
    const OpenControl control(DaqCtrlBase_Create(scenario));
    const OpenControl other(DaqCtrlBase_Create(scenario));
    if (control == nullptr) {
      findings.refuse(nameOf(scenario));
      continue;
    }
    findings.expect(control != other, "is the one that was made before", nameOf(scenario));
    expectUnbound(scenario, control.get(), findings, nameOf(scenario));
  }
}

void checkControlOfUnknown(const CheckContext&, Findings& findings) {
  const std::wstring known = listedDescriptions().front();
  std::set<int32_t> numbers = unusedNumbers();
  numbers.insert(-2);
  for (const Scenario scenario : Scenarios) {
    const OpenControl control(DaqCtrlBase_Create(scenario));
    if (control == nullptr) continue;
    for (const int32_t number : numbers) expectNoBinding(scenario, control.get(), recordFor(number, known), findings);
    for (const wchar_t* const description : {L"", UnknownDescription})
      expectNoBinding(scenario, control.get(), recordFor(-1, description), findings);
  }
}

// By number with any description, by description, and in both modes.
void checkBinding(const CheckContext&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& place) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    const std::wstring description = descriptionOf(device);
    const DeviceInformation whole = recordFor(number, description);
    const DeviceInformation forFusion = recordFor(number, description, AccessFusion);
    for (const Scenario scenario : Scenarios) {
      const std::string where = nameOf(scenario) + ", " + place;
      const bool isTaken = tryBinding(scenario, whole, whole, findings, where);
      if (!isTaken) findings.refuse(where);
      for (const DeviceInformation& record :
           {recordFor(-1, description), recordFor(number, L""), recordFor(number, UnknownDescription)})
        findings.expect(tryBinding(scenario, record, whole, findings, where) == isTaken,
                        "is bound by number and description, but not by number " + std::to_string(record.DeviceNumber) +
                            " and " + show(record.Description) + ", or otherwise",
                        where);
      tryBinding(scenario, forFusion, forFusion, findings, where);
    }
  });
}

// A control that is bound again serves the new device, and none if it is refused.
void checkRebinding(const CheckContext&, Findings& findings) {
  std::vector<int32_t> numbers = listedNumbers();
  if (!numbers.empty()) numbers.push_back(numbers.front());  // where there is one device, too
  for (const Scenario scenario : Scenarios) {
    OpenControl control;
    for (const int32_t number : numbers) {
      const OpenDevice opened = openDevice(number, nullptr);
      const std::wstring description = descriptionOf(opened.get());
      const DeviceInformation record = recordFor(number, description);
      const std::string where = nameOf(scenario) + " bound again, " + placeOf(description);
      if (control == nullptr) {
        control = openControl(scenario, number);
        if (control == nullptr) continue;
      } else if (failed(DaqCtrlBase_setSelectedDevice(control.get(), &record))) {
        expectUnbound(scenario, control.get(), findings, where);
        continue;
      }
      checkBound(control.get(), record, findings, where);
      expectOwnItems(scenario, control.get(), number, findings, where);
    }
    if (control != nullptr) expectNoBinding(scenario, control.get(), recordFor(UnknownNumber, L""), findings);
  }
}

}  // namespace compliance
