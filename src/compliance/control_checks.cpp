// Scenario controls: what they are bound to. A library may refuse to make one.
#include <algorithm>
#include <cwchar>
#include <string>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

constexpr Scenario Scenarios[] = {ScenarioFirmware, ScenarioCalibration};

std::string nameOf(Scenario scenario) {
  return scenario == ScenarioFirmware ? "firmware control" : "calibration control";
}

DeviceInformation recordFor(int32_t number, const std::wstring& description) {
  DeviceInformation record{number, AccessDevice, 0, {}};
  description.copy(record.Description, std::size(record.Description) - 1);
  return record;
}

void expectUnbound(DaqCtrlBase* control, Findings& findings, const std::string& where) {
  findings.expect(DaqCtrlBase_getDevice(control) == nullptr, "has a device although it is not bound", where);
}

void checkUnbound(const Bench&, Findings& findings) {
  for (const Scenario scenario : Scenarios) {
    const OpenControl control(DaqCtrlBase_Create(scenario));
    if (control == nullptr) continue;
    const std::string where = nameOf(scenario);
    expectUnbound(control.get(), findings, where);
    for (const DeviceInformation& record : {recordFor(UnknownNumber, L""), recordFor(-1, UnknownDescription)}) {
      const ErrorCode status = DaqCtrlBase_setSelectedDevice(control.get(), &record);
      findings.expect(failed(status), "is bound to a device that is not there, status " + show(status), where);
      expectUnbound(control.get(), findings, where);
    }
  }
}

// Filled beforehand, so that what is left out and what is written behind it shows.
struct GuardedRecord {
  GuardedRecord() { std::fill_n(reinterpret_cast<wchar_t*>(this), sizeof *this / sizeof(wchar_t), Filler); }
  bool isGuardIntact() const {
    return std::all_of(std::begin(guard), std::end(guard), [](wchar_t c) { return c == Filler; });
  }
  std::wstring description() const { return {record.Description, wcsnlen(record.Description, 64)}; }

  static constexpr wchar_t Filler = 0x5A5A5A5A;
  DeviceInformation record;
  wchar_t guard[64];
};

void checkBound(DaqCtrlBase* control, const DeviceInformation& wanted, Findings& findings, const std::string& where) {
  GuardedRecord answer;
  const ErrorCode status = DaqCtrlBase_getSelectedDevice(control, &answer.record);
  findings.expect(!failed(status), "status " + show(status) + " for the record of the bound device", where);
  findings.expect(answer.isGuardIntact(), "writes behind the record", where);
  const int32_t number = answer.record.DeviceNumber;
  findings.expect(number == wanted.DeviceNumber, "number " + std::to_string(number) + " in the record", where);
  findings.expect(answer.description() == wanted.Description, "another description in the record", where);
  DeviceCtrl* const device = DaqCtrlBase_getDevice(control);
  if (findings.expect(device != nullptr, "has no device although it is bound", where))
    findings.expect(DeviceCtrl_getDeviceNumber(device) == wanted.DeviceNumber, "has another device", where);
}

void checkBinding(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& place) {
    const DeviceInformation byNumber = recordFor(DeviceCtrl_getDeviceNumber(device), descriptionOf(device));
    DeviceInformation byDescription = byNumber;
    byDescription.DeviceNumber = -1;
    for (const Scenario scenario : Scenarios) {
      for (const DeviceInformation& record : {byNumber, byDescription}) {
        const OpenControl control(DaqCtrlBase_Create(scenario));
        if (control == nullptr) continue;
        const std::string where = nameOf(scenario) + ", " + place;
        if (failed(DaqCtrlBase_setSelectedDevice(control.get(), &record)))
          expectUnbound(control.get(), findings, where);
        else
          checkBound(control.get(), byNumber, findings, where);
      }
    }
  });
}

constexpr Check List[] = {{"control-unbound", checkUnbound}, {"control-binding", checkBinding}};

}  // namespace

const Checks ControlChecks = List;

}  // namespace compliance
