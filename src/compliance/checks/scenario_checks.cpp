// What firmware and calibration controls return of a device. Nothing is loaded, started or restored here.
#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/items.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

// A string that is returned is never null, and the same when requested again.
void checkString(const std::function<const wchar_t*()>& get, const std::string& what, Findings& findings,
                 const std::string& where) {
  const std::string first = show(get());
  findings.expect(first != "null", what + " is null", where);
  findings.expect(show(get()) == first, what + " differs when requested again", where);
}

bool checkArray(Array* array, const std::string& kind, Findings& findings, const std::string& where) {
  if (!expectStable(array, findings, where + ", list of every " + kind)) return false;
  const std::vector<void*> elements = elementsOf(array);
  for (size_t i = 0; i < elements.size(); ++i)
    findings.expect(std::count(elements.begin(), elements.end(), elements[i]) == 1, "is listed twice",
                    where + ", " + kind + " " + std::to_string(i));
  return true;
}

void checkChip(FirmwareItem* chip, Findings& findings, const std::string& where) {
  for (const wchar_t* const path : {L"/nonexistent/velq-compliance.dfu", L"velq-compliance: no such file", L""}) {
    const ErrorCode status = FirmwareItem_loadFile(chip, path);
    findings.expect(status == ErrorFileUnreadable || status == ErrorDeviceBusy,
                    "status " + show(status) + " for a firmware file that does not exist, " + show(path), where);
  }
  const ErrorCode status = FirmwareItem_loadFile(chip, L"/dev/null");
  findings.expect(failed(status), "status " + show(status) + " for an empty firmware file", where);
}

// Tools poll an item also where the start of its section was refused.
void checkItem(CalibrationItem* item, Findings& findings, const std::string& where) {
  int64_t value = 0;
  int32_t detail = 0;
  constexpr auto untouched = static_cast<uint32_t>(Filler);
  // Twice the room that tools have, to see what is written beyond it.
  std::vector<uint32_t> codes(2 * CalibrationCodeCount, untouched);
  const CalibrationState state = CalibrationItem_getState(item, &value, &detail, codes.data());
  findings.expect(state != CalibrationRunning, "runs although its section was not started", where);
  findings.expect(std::count(codes.begin() + CalibrationCodeCount, codes.end(), untouched) == CalibrationCodeCount,
                  "writes more than 15 codes", where);
}

void checkItems(Scenario scenario, DaqCtrlBase* control, Findings& findings, const std::string& device) {
  const auto at = [&](const std::string& place) { return place.empty() ? device : device + ", " + place; };
  visitItems(
      scenario, control,
      {.array = [&](auto* array, auto& kind, auto& place) { return checkArray(array, kind, findings, at(place)); },
       .string = [&](auto& get, auto* what, auto& place) { checkString(get, what, findings, at(place)); },
       .chip = [&](auto* chip, auto& place) { checkChip(chip, findings, at(place)); },
       .item = [&](auto* item, auto& place) { checkItem(item, findings, at(place)); }});
}

void checkScenario(Scenario scenario, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& place) {
    const OpenControl control = openControl(scenario, DeviceCtrl_getDeviceNumber(device));
    if (control == nullptr) return findings.refuse(nameOf(scenario) + ", " + place);
    checkItems(scenario, control.get(), findings, place);
  });
}

}  // namespace

void checkFirmware(const CheckContext&, Findings& findings) { checkScenario(ScenarioFirmware, findings); }

void checkCalibration(const CheckContext&, Findings& findings) { checkScenario(ScenarioCalibration, findings); }

}  // namespace compliance
