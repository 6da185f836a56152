#include "compliance/snapshot.h"

#include <algorithm>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

using TextGetter = ErrorCode (*)(DeviceCtrl*, int32_t, wchar_t*);

std::string textOf(TextGetter getter, DeviceCtrl* device) {
  std::wstring text(LargeCapacity, L'\0');
  const ErrorCode status = getter(device, LargeCapacity, text.data());
  text.back() = 0;
  return failed(status) ? show(status) : show(text.c_str());
}

template <typename Value>
std::string valuesOf(Array* array) {
  if (array == nullptr) return "null";
  std::string text;
  for (const void* const value : elementsOf(array)) text += std::to_string(*static_cast<const Value*>(value)) + " ";
  return text;
}

std::string childrenText(int32_t number) {
  std::string text;
  for (const int32_t child : childrenOf(number)) text += std::to_string(child) + " ";
  return text;
}

void addFirmware(Snapshot& lines, const std::string& where, DeviceCtrl* device) {
  const OpenControl control = openControl(ScenarioFirmware, device);
  if (control == nullptr) return;
  for (void* const element : elementsOf(FirmwareCtrls_getFirmwares(static_cast<FirmwareCtrls*>(control.get())))) {
    auto* const item = static_cast<FirmwareItem*>(element);
    lines.push_back(where + ": firmware " + show(FirmwareItem_getDescription(item)) + " " +
                    show(FirmwareItem_getVersion(item)));
  }
}

void addCalibration(Snapshot& lines, const std::string& where, DeviceCtrl* device) {
  const OpenControl control = openControl(ScenarioCalibration, device);
  if (control == nullptr) return;
  for (void* const element : elementsOf(CalibrationCtrl_getSolutions(static_cast<CalibrationCtrl*>(control.get())))) {
    auto* const solution = static_cast<CalibrationSolution*>(element);
    lines.push_back(where + ": calibration " + show(CalibrationSolution_getName(solution)) + " of " +
                    std::to_string(elementsOf(CalibrationSolution_getSections(solution)).size()) + " sections");
  }
}

void addDevice(Snapshot& lines, const std::string& where, DeviceCtrl* device) {
  const auto add = [&](const char* fact, const std::string& value) { lines.push_back(where + ": " + fact + value); };
  const int32_t number = DeviceCtrl_getDeviceNumber(device);
  add("number ", std::to_string(number));
  add("description ", textOf(DeviceCtrl_getDescription, device));
  add("product id ", std::to_string(DeviceCtrl_getProductId(device)));
  add("board id ", std::to_string(DeviceCtrl_getBoardId(device)));
  add("board version ", textOf(DeviceCtrl_getBoardVersion, device));
  add("driver version ", textOf(DeviceCtrl_getDriverVersion, device));
  add("library version ", textOf(DeviceCtrl_getDllVersion, device));
  add("location ", textOf(DeviceCtrl_getLocation, device));
  add("base addresses ", valuesOf<uint64_t>(DeviceCtrl_getBaseAddresses(device)));
  add("interrupts ", valuesOf<int32_t>(DeviceCtrl_getInterrupts(device)));
  add("fusion status ", show(CvxIsFusionDevice(number)));
  add("children ", childrenText(number));
  addFirmware(lines, where, device);
  addCalibration(lines, where, device);
}

void checkUnchanged(const Bench& bench, Findings& findings) {
  const std::string difference = firstDifference(bench.before, takeSnapshot());
  findings.expect(difference.empty(), difference, "although all checks so far only read");
}

constexpr Check List[] = {{"reads-change-nothing", checkUnchanged}};

}  // namespace

const Checks SnapshotChecks = List;

Snapshot takeSnapshot() {
  Snapshot lines;
  for (const std::wstring& description : listedDescriptions()) {
    const std::string where = placeOf(description);
    const OpenDevice device = openDevice(description);
    if (device == nullptr)
      lines.push_back(where + ": cannot be opened");
    else
      addDevice(lines, where, device.get());
  }
  return lines;
}

std::string firstDifference(const Snapshot& before, const Snapshot& after) {
  const auto [left, right] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
  if (left == before.end() && right == after.end()) return "";
  return (left == before.end() ? "nothing" : *left) + " before, " + (right == after.end() ? "nothing" : *right) +
         " after";
}

}  // namespace compliance
