// What firmware and calibration controls tell of a device. Nothing is loaded, started or restored here.
#include <string>

#include "compliance/array_checks.h"
#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

constexpr const wchar_t* MissingFile = L"/nonexistent/velq-compliance.dfu";

// A text that is returned is never null, and the same when asked for again.
template <typename Object>
void expectText(const wchar_t* (*getter)(Object*), Object* object, const char* what, Findings& findings,
                const std::string& where) {
  const std::string text = show(getter(object));
  findings.expect(text != "null", std::string(what) + " is null", where);
  findings.expect(show(getter(object)) == text, std::string(what) + " is another when asked for again", where);
}

template <typename Object, typename Visit>
void forEachIn(Array* array, const char* kind, Findings& findings, const std::string& where, const Visit& visit) {
  if (!expectStable(array, findings, where + ", list of every " + kind)) return;
  int index = 0;
  for (void* const element : elementsOf(array))
    visit(static_cast<Object*>(element), where + ", " + kind + " " + std::to_string(index++));
}

void checkChip(FirmwareItem* chip, Findings& findings, const std::string& where) {
  expectText(FirmwareItem_getDescription, chip, "description", findings, where);
  expectText(FirmwareItem_getVersion, chip, "version", findings, where);
  const ErrorCode status = FirmwareItem_loadFile(chip, MissingFile);
  findings.expect(status == ErrorFileUnreadable || status == ErrorDeviceBusy,
                  "status " + show(status) + " for a firmware file that does not exist", where);
}

void checkFirmware(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& place) {
    const OpenControl control = openControl(ScenarioFirmware, device);
    if (control == nullptr) return;
    Array* const chips = FirmwareCtrls_getFirmwares(static_cast<FirmwareCtrls*>(control.get()));
    forEachIn<FirmwareItem>(chips, "chip", findings, place,
                            [&](FirmwareItem* chip, const std::string& where) { checkChip(chip, findings, where); });
  });
}

void checkSection(CalibrationSection* section, Findings& findings, const std::string& place) {
  expectText(CalibrationSection_getDescription, section, "description", findings, place);
  expectText(CalibrationSection_getInstruction, section, "instruction", findings, place);
  forEachIn<CalibrationItem>(CalibrationSection_getItems(section), "item", findings, place,
                             [&](CalibrationItem* item, const std::string& where) {
                               expectText(CalibrationItem_getName, item, "name", findings, where);
                             });
}

void checkSolution(CalibrationSolution* solution, Findings& findings, const std::string& place) {
  expectText(CalibrationSolution_getName, solution, "name", findings, place);
  expectText(CalibrationSolution_getDescription, solution, "description", findings, place);
  expectText(CalibrationSolution_getInstruction, solution, "instruction", findings, place);
  forEachIn<CalibrationSection>(
      CalibrationSolution_getSections(solution), "section", findings, place,
      [&](CalibrationSection* section, const std::string& where) { checkSection(section, findings, where); });
}

void checkCalibration(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& place) {
    const OpenControl control = openControl(ScenarioCalibration, device);
    if (control == nullptr) return;
    Array* const solutions = CalibrationCtrl_getSolutions(static_cast<CalibrationCtrl*>(control.get()));
    forEachIn<CalibrationSolution>(
        solutions, "solution", findings, place,
        [&](CalibrationSolution* solution, const std::string& where) { checkSolution(solution, findings, where); });
  });
}

constexpr Check List[] = {{"firmware", checkFirmware}, {"calibration", checkCalibration}};

}  // namespace

const Checks ScenarioChecks = List;

}  // namespace compliance
