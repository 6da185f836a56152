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

// What the arguments ask for. Every text counts wherever it stands in the option, so several can hold at once.
struct Request {
  explicit Request(const Arguments& given)
      : arguments(given),
        selected(holds(given.selector, "/dn:") || holds(given.selector, "/dd:")),
        overwrite(holds(given.option, "-fwo:")),
        firmware(holds(given.option, "-fw")),
        description(holds(given.option, "-cd:")),
        boardId(holds(given.option, "-ci:")),
        aiAuto(holds(given.option, "-cali:ai.auto")),
        aoAuto(holds(given.option, "-cali:ao.auto")),
        aiReverse(holds(given.option, "-cali:ai.reverse")),
        aoReverse(holds(given.option, "-cali:ao.reverse")) {}

  // "-fwo:" asks for firmware, too.
  bool needsCalibration() const {
    return (aiAuto || aoAuto || aiReverse || aoReverse) && !firmware && !description && !boardId;
  }

  const Arguments arguments;
  const bool selected, overwrite, firmware, description, boardId, aiAuto, aoAuto, aiReverse, aoReverse;
};

// Released by hand, not by a destructor: a failed preparation leaves its control to the end of the process.
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

// The device that is opened for the report stays open, deliberately.
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

// A firmware control that is bound to the device; null when refused, after a report where one is due.
FirmwareCtrls* prepareFirmware(DeviceInformation& device) {
  // By the record's number, which is -1 for a device that is chosen by description.
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

// A calibration control that is bound to the device; null when refused, after a report where one is due.
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

// Runs what needs a selected device. False when the arguments name no such operation. What becomes of an operation is
// its own to report.
bool runOnSelected(int argc, const Request& request, const Controls& controls, DeviceInformation& device) {
  const Arguments& arguments = request.arguments;
  if (argc == 2 || (argc == 3 && arguments.option == "-detail"))
    QueryDeviceInfo(device);
  else if (request.overwrite)
    FwDownload(controls.firmware, arguments.option, arguments.third, arguments.fourth, device);
  else if (arguments.option == "-fw")
    QueryFwInfo(controls.firmware, device);
  else if (request.description)
    changeDescription(arguments.selector, arguments.option, device);
  else if (request.boardId)
    changeBoardID(arguments.option, device);
  else if (request.aiAuto)
    startCalibration(controls.calibration, L"AI.Auto");
  else if (request.aoAuto)
    startCalibration(controls.calibration, L"AO.Auto");
  else if (request.aiReverse)
    LoadFromGoldenBackup(controls.calibration, true, device);
  else if (request.aoReverse)
    LoadFromGoldenBackup(controls.calibration, false, device);
  else
    return false;
  return true;
}

int dispatch(int argc, char** argv, const Request& request, const Controls& controls, DeviceInformation& device) {
  if (request.selected && runOnSelected(argc, request, controls, device)) return 0;
  const std::string& option = request.arguments.option;
  if (option == "-fusion" && argc == 3) {
    QueryFusionDevInfo(device);
    return 0;
  }
  if (option == "-fusion") return extendFusionDevice(argc, argv, device);
  if (option == "-defusion" && argc == 3) return dissolveFusionDevice(device);
  reportInsufficientParameter();
  return 0;
}

}  // namespace

int doWork(int argc, char** argv, DeviceInformation& device) {
  const Request request(Arguments(argc, argv));
  Controls controls;
  if (request.firmware) {
    controls.firmware = prepareFirmware(device);
    if (controls.firmware == nullptr) return -1;
  }
  if (request.needsCalibration()) {
    controls.calibration = prepareCalibration(device);
    if (controls.calibration == nullptr) return -1;
  }
  const int result = dispatch(argc, argv, request, controls, device);
  if (result != 0) return result;
  if (controls.firmware != nullptr) DaqCtrlBase_dispose(controls.firmware);
  if (controls.calibration != nullptr) DaqCtrlBase_dispose(controls.calibration);
  return 0;
}
