#include "operations/do_work.h"

#include <velq/velq.h>

#include <cstdio>

#include "operations/board_id.h"
#include "operations/calibration.h"
#include "operations/defusion.h"
#include "operations/description.h"
#include "operations/device_report.h"
#include "operations/firmware.h"
#include "operations/fusion.h"
#include "operations/library_text.h"
#include "operations/usage.h"
#include "qutil/arguments.h"

using namespace Automation::Velq;

namespace {

// What the arguments ask for. Options are recognised anywhere in the argument, so it can have several.
struct Command {
  explicit Command(const Arguments& given)
      : arguments(given),
        selected(contains(given.selector, "/dn:") || contains(given.selector, "/dd:")),
        overwrite(contains(given.option, "-fwo:")),
        firmware(contains(given.option, "-fw")),
        description(contains(given.option, "-cd:")),
        boardId(contains(given.option, "-ci:")),
        aiAuto(contains(given.option, "-cali:ai.auto")),
        aoAuto(contains(given.option, "-cali:ao.auto")),
        aiReverse(contains(given.option, "-cali:ai.reverse")),
        aoReverse(contains(given.option, "-cali:ao.reverse")) {}

  // Not if another operation comes before. "-fwo:" contains "-fw".
  bool needsCalibration() const {
    return (aiAuto || aoAuto || aiReverse || aoReverse) && !firmware && !description && !boardId;
  }

  const Arguments arguments;
  const bool selected, overwrite, firmware, description, boardId, aiAuto, aoAuto, aiReverse, aoReverse;
};

// Quirk: not released by a destructor, because a control whose preparation fails is never released.
struct Controls {
  FirmwareCtrls* firmware = nullptr;
  CalibrationCtrl* calibration = nullptr;
};

void reportFusionFirmware(const DeviceInformation& device) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, AccessDevice);
  if (opened == nullptr) return;
  const LibraryText description = descriptionOf(opened);
  DeviceCtrl_dispose(opened);
  printf("N/A,%S is a SW device.\n", description.data());
}

// Quirk: the device that is opened for the report is never released.
void reportUnboundFirmware(const DeviceInformation& device, ErrorCode status) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, device.OpenMode);
  if (opened == nullptr) return;
  printf("Cannot find specified Quellis device %d! (Errorlevel = %d),ErrorCode = 0x%0x.\n",
         DeviceCtrl_getDeviceNumber(opened), 3, status);
}

void readBinding(DaqCtrlBase* control, DeviceInformation& device) {
  DaqCtrlBase_getSelectedDevice(control, &device);
  device.Description[DescriptionCapacity - 1] = 0;
}

// Returns a firmware control that is bound to the device; null when that fails.
FirmwareCtrls* prepareFirmware(DeviceInformation& device) {
  // Quirk: by the number in the record, -1 for a device that is chosen by description.
  if (CvxIsFusionDevice(device.DeviceNumber) == Success) {
    reportFusionFirmware(device);
    return nullptr;
  }
  auto* const control = static_cast<FirmwareCtrls*>(DaqCtrlBase_Create(ScenarioFirmware));
  if (control == nullptr) return nullptr;
  const ErrorCode status = DaqCtrlBase_setSelectedDevice(control, &device);
  if (failed(status)) {
    reportUnboundFirmware(device, status);
    return nullptr;
  }
  readBinding(control, device);
  return control;
}

// Returns a calibration control that is bound to the device; null when that fails.
CalibrationCtrl* prepareCalibration(DeviceInformation& device) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, AccessDevice);
  if (opened == nullptr) return nullptr;
  const LibraryText description = descriptionOf(opened);
  const int32_t number = DeviceCtrl_getDeviceNumber(opened);
  DeviceCtrl_dispose(opened);
  if (CvxIsFusionDevice(number) == Success) {
    printf("Failed to execute,%S is a SW device.(ErrorLevel = %d)\n", description.data(), 3);
    return nullptr;
  }
  auto* const control = static_cast<CalibrationCtrl*>(DaqCtrlBase_Create(ScenarioCalibration));
  if (control == nullptr) return nullptr;
  if (failed(DaqCtrlBase_setSelectedDevice(control, &device))) {
    puts("Select device error!");
    return nullptr;
  }
  readBinding(control, device);
  return control;
}

// Runs what needs a selected device. False when the arguments name no such operation. Quirk: the results are ignored,
// so a failed operation counts as done.
bool runOnSelected(const Command& command, const Controls& controls, DeviceInformation& device) {
  const Arguments& arguments = command.arguments;
  // Quirk: the first that applies, so of several options in one argument all others are ignored.
  if (arguments.argc == 2 || (arguments.argc == 3 && arguments.option == "-detail"))
    QueryDeviceInfo(device);
  else if (command.overwrite)
    FwDownload(controls.firmware, arguments.option, arguments.third, arguments.fourth, device);
  else if (arguments.option == "-fw")
    QueryFwInfo(controls.firmware, device);
  else if (command.description)
    changeDescription(arguments.selector, arguments.option, device);
  else if (command.boardId)
    changeBoardID(arguments.option, device);
  else if (command.aiAuto)
    startCalibration(controls.calibration, L"AI.Auto");
  else if (command.aoAuto)
    startCalibration(controls.calibration, L"AO.Auto");
  else if (command.aiReverse)
    LoadFromGoldenBackup(controls.calibration, true, device);
  else if (command.aoReverse)
    LoadFromGoldenBackup(controls.calibration, false, device);
  else
    return false;
  return true;
}

int dispatch(const Command& command, const Controls& controls, DeviceInformation& device) {
  if (command.selected && runOnSelected(command, controls, device)) return 0;
  const Arguments& arguments = command.arguments;
  if (arguments.option == "-fusion" && arguments.argc == 3) {
    QueryFusionDevInfo(device);
    return 0;
  }
  if (arguments.option == "-fusion") return extendFusionDevice(arguments.argc, arguments.argv, device);
  if (arguments.option == "-defusion" && arguments.argc == 3) return dissolveFusionDevice(device);
  reportInsufficientParameter();
  return 0;
}

}  // namespace

int doWork(int argc, char** argv, DeviceInformation& device) {
  const Command command(Arguments(argc, argv));
  Controls controls;
  // Quirk: "-fw" anywhere in the option creates a control, whether or not an operation uses it.
  if (command.firmware) {
    controls.firmware = prepareFirmware(device);
    if (controls.firmware == nullptr) return -1;
  }
  if (command.needsCalibration()) {
    controls.calibration = prepareCalibration(device);
    if (controls.calibration == nullptr) return -1;
  }
  const int result = dispatch(command, controls, device);
  if (result != 0) return result;
  if (controls.firmware != nullptr) DaqCtrlBase_dispose(controls.firmware);
  if (controls.calibration != nullptr) DaqCtrlBase_dispose(controls.calibration);
  return 0;
}
