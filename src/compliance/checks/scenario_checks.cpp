// What firmware and calibration controls return of a device. Nothing is loaded, started or restored here.
#include <algorithm>
#include <string>
#include <vector>

#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"
#include "compliance/devices/devices.h"

namespace compliance {

namespace {

// A text that is returned is never null, and the same when asked for again.
template <typename Object>
void expectText(const wchar_t* (*getter)(Object*), Object* object, const char* what, Findings& findings,
                const std::string& where) {
  const std::string text = show(getter(object));
  findings.expect(text != "null", std::string(what) + " is null", where);
  findings.expect(show(getter(object)) == text, std::string(what) + " differs when requested again", where);
}

template <typename Object, typename Visit>
void forEachIn(Array* array, const char* kind, Findings& findings, const std::string& where, const Visit& visit) {
  if (!expectStable(array, findings, where + ", list of every " + kind)) return;
  const std::vector<void*> elements = elementsOf(array);
  for (size_t i = 0; i < elements.size(); ++i) {
    const std::string place = where + ", " + kind + " " + std::to_string(i);
    findings.expect(std::count(elements.begin(), elements.end(), elements[i]) == 1, "is listed twice", place);
    visit(static_cast<Object*>(elements[i]), place);
  }
}

// Visits the chips or solutions of every device.
template <typename Object, typename Visit>
void forEachItem(Scenario scenario, const char* kind, Findings& findings, const Visit& visit) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& place) {
    const OpenControl control = openControl(scenario, DeviceCtrl_getDeviceNumber(device));
    if (control == nullptr) return findings.refuse(nameOf(scenario) + ", " + place);
    forEachIn<Object>(itemsOf(scenario, control.get()), kind, findings, place, visit);
  });
}

void checkChip(FirmwareItem* chip, Findings& findings, const std::string& where) {
  expectText(FirmwareItem_getDescription, chip, "description", findings, where);
  expectText(FirmwareItem_getVersion, chip, "version", findings, where);
  expectText(FirmwareItem_getNotice, chip, "notice", findings, where);
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
  expectText(CalibrationItem_getName, item, "name", findings, where);
  int64_t value = 0;
  int32_t detail = 0;
  constexpr auto untouched = static_cast<uint32_t>(Filler);
  std::vector<uint32_t> codes(2 * CalibrationCodeCount, untouched);
  const CalibrationState state = CalibrationItem_getState(item, &value, &detail, codes.data());
  findings.expect(state != CalibrationRunning, "runs although its section was not started", where);
  findings.expect(std::count(codes.begin() + CalibrationCodeCount, codes.end(), untouched) == CalibrationCodeCount,
                  "writes more than 15 codes", where);
}

void checkSection(CalibrationSection* section, Findings& findings, const std::string& place) {
  expectText(CalibrationSection_getDescription, section, "description", findings, place);
  expectText(CalibrationSection_getInstruction, section, "instruction", findings, place);
  forEachIn<CalibrationItem>(
      CalibrationSection_getItems(section), "item", findings, place,
      [&](CalibrationItem* item, const std::string& where) { checkItem(item, findings, where); });
}

void checkSolution(CalibrationSolution* solution, Findings& findings, const std::string& place) {
  expectText(CalibrationSolution_getName, solution, "name", findings, place);
  expectText(CalibrationSolution_getDescription, solution, "description", findings, place);
  expectText(CalibrationSolution_getInstruction, solution, "instruction", findings, place);
  forEachIn<CalibrationSection>(
      CalibrationSolution_getSections(solution), "section", findings, place,
      [&](CalibrationSection* section, const std::string& where) { checkSection(section, findings, where); });
}

}  // namespace

void checkFirmware(const CheckContext&, Findings& findings) {
  forEachItem<FirmwareItem>(ScenarioFirmware, "chip", findings,
                            [&](FirmwareItem* chip, const std::string& where) { checkChip(chip, findings, where); });
}

void checkCalibration(const CheckContext&, Findings& findings) {
  forEachItem<CalibrationSolution>(
      ScenarioCalibration, "solution", findings,
      [&](CalibrationSolution* solution, const std::string& where) { checkSolution(solution, findings, where); });
}

}  // namespace compliance
