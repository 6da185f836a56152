// What firmware and calibration controls return of a device. Nothing is loaded, started or restored here.
#include <sys/mman.h>

#include <algorithm>

#include "compliance/checks/check.h"
#include "compliance/devices/items.h"

namespace compliance {

namespace {

// A string that is returned is never null, and the same when requested again.
void checkString(const std::function<const wchar_t*()>& get, const std::string& what, const Findings& here) {
  const std::string first = show(get());
  here.expect(first != "null", what + " is null");
  here.expect(show(get()) == first, what + " differs when requested again");
}

bool checkArray(Array* array, const std::string& kind, const Findings& here) {
  if (!expectStable(array, here.at("list of every " + kind))) return false;
  const std::vector<void*> elements = elementsOf(array);
  for (size_t i = 0; i < elements.size(); ++i)
    here.at(kind + " " + std::to_string(i))
        .expect(std::count(elements.begin(), elements.end(), elements[i]) == 1, "is listed twice");
  return true;
}

// A regular file, unlike /dev/null, without a byte. It ends with the process.
std::wstring emptyFile() {
  static const int number = memfd_create("empty", MFD_CLOEXEC);
  return L"/proc/self/fd/" + std::to_wstring(number);
}

void checkChip(FirmwareItem* chip, const Findings& here) {
  for (const wchar_t* const path : {L"/nonexistent/velq-compliance.dfu", L"velq-compliance: no such file", L""}) {
    const ErrorCode status = FirmwareItem_loadFile(chip, path);
    here.expect(status == ErrorFileUnreadable || status == ErrorDeviceBusy,
                "status " + show(status) + " for a firmware file that does not exist, " + show(path));
  }
  for (const std::wstring& path : {std::wstring(L"/dev/null"), emptyFile()}) {
    const ErrorCode status = FirmwareItem_loadFile(chip, path.c_str());
    here.expect(failed(status), "status " + show(status) + " for an empty firmware file");
  }
}

// Tools poll an item also where the start of its section was refused.
void checkItem(CalibrationItem* item, const Findings& here) {
  int64_t value = 0;
  int32_t detail = 0;
  constexpr auto untouched = static_cast<uint32_t>(Filler);
  // Twice the room that tools have, to see what is written beyond it.
  std::vector<uint32_t> codes(2 * CalibrationCodeCount, untouched);
  const CalibrationState state = CalibrationItem_getState(item, &value, &detail, codes.data());
  here.expect(state != CalibrationRunning, "runs although its section was not started");
  here.expect(std::count(codes.begin() + CalibrationCodeCount, codes.end(), untouched) == CalibrationCodeCount,
              "writes more than 15 codes");
}

void checkScenario(Scenario scenario, const Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const Findings& here) {
    const OpenControl control = openControl(scenario, DeviceCtrl_getDeviceNumber(device));
    if (control == nullptr) return here.at(nameOf(scenario)).refuse();
    const auto at = [&](const std::string& place) { return place.empty() ? here : here.at(place); };
    visitItems(scenario, control.get(),
               {.array = [&](auto* array, auto& kind, auto& place) { return checkArray(array, kind, at(place)); },
                .string = [&](auto& get, auto* what, auto& place) { checkString(get, what, at(place)); },
                .chip = [&](auto* chip, auto& place) { checkChip(chip, at(place)); },
                .item = [&](auto* item, auto& place) { checkItem(item, at(place)); }});
  });
}

}  // namespace

void checkFirmware(const CheckContext& context) { checkScenario(ScenarioFirmware, context.findings); }

void checkCalibration(const CheckContext& context) { checkScenario(ScenarioCalibration, context.findings); }

}  // namespace compliance
