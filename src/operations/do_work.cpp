#include "operations/do_work.h"

#include <velq/velq.h>

#include <cstdio>

#include "base/arguments.h"
#include "operations/board_id.h"
#include "operations/calibration.h"
#include "operations/defusion.h"
#include "operations/description.h"
#include "operations/device_report.h"
#include "operations/firmware.h"
#include "operations/fusion.h"
#include "operations/library_text.h"
#include "operations/usage.h"

using namespace Automation::Velq;

namespace {

// What the option asks for. Every text counts wherever it stands in the option, so several can hold at once.
struct Request {
  explicit Request(const std::string& option)
      : overwrite(holds(option, "-fwo:")),
        firmware(holds(option, "-fw")),
        description(holds(option, "-cd:")),
        boardId(holds(option, "-ci:")),
        aiAuto(holds(option, "-cali:ai.auto")),
        aoAuto(holds(option, "-cali:ao.auto")),
        aiReverse(holds(option, "-cali:ai.reverse")),
        aoReverse(holds(option, "-cali:ao.reverse")) {}

  bool needsCalibration() const {
    return (aiAuto || aoAuto || aiReverse || aoReverse) && !overwrite && !firmware && !description && !boardId;
  }

  bool overwrite, firmware, description, boardId, aiAuto, aoAuto, aiReverse, aoReverse;
};

// Released by hand, not by a destructor: a failed preparation leaves its control to the end of the process.
struct Controls {
  FirmwareCtrls* firmware = nullptr;
  CalibrationCtrl* calibration = nullptr;
};

bool refuseFusionFirmware(const DeviceInformation& device) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, AccessDevice);
  if (opened == nullptr) return false;
  const LibraryText description = descriptionOf(opened);
  DeviceCtrl_dispose(opened);
  printf("N/A,%S is a SW device.\n", description.data());
  return false;
}

bool reportUnboundFirmware(const DeviceInformation& device, ErrorCode status) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, device.OpenMode);
  if (opened == nullptr) return false;
  printf("Cannot find specified Quellis device %d! (Errorlevel = %d),ErrorCode = 0x%0x.\n",
         DeviceCtrl_getDeviceNumber(opened), 3, status);
  return false;
}

void readBinding(DaqCtrlBase* control, DeviceInformation& device) {
  DaqCtrlBase_getSelectedDevice(control, &device);
  device.Description[std::size(device.Description) - 1] = 0;
}

bool prepareFirmware(DeviceInformation& device, FirmwareCtrls*& control) {
  if (CvxIsFusionDevice(device.DeviceNumber) == Success) return refuseFusionFirmware(device);
  control = static_cast<FirmwareCtrls*>(DaqCtrlBase_Create(ScenarioFirmware));
  if (control == nullptr) return false;
  const ErrorCode status = DaqCtrlBase_setSelectedDevice(control, &device);
  if (failed(status)) return reportUnboundFirmware(device, status);
  readBinding(control, device);
  return true;
}

bool prepareCalibration(DeviceInformation& device, CalibrationCtrl*& control) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, AccessDevice);
  if (opened == nullptr) return false;
  const LibraryText description = descriptionOf(opened);
  const int32_t number = DeviceCtrl_getDeviceNumber(opened);
  DeviceCtrl_dispose(opened);
  if (CvxIsFusionDevice(number) == Success) {
    printf("Failed to execute,%S is a SW device.(ErrorLevel = %d)\n", description.data(), 3);
    return false;
  }
  control = static_cast<CalibrationCtrl*>(DaqCtrlBase_Create(ScenarioCalibration));
  if (control == nullptr) return false;
  if (failed(DaqCtrlBase_setSelectedDevice(control, &device))) {
    puts("Select device error!");
    return false;
  }
  readBinding(control, device);
  return true;
}

// Runs what needs a selected device. False when the arguments name no such operation.
bool runOnSelected(int argc, const Arguments& arguments, const Request& request, const Controls& controls,
                   DeviceInformation& device) {
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
  const Arguments arguments(argc, argv);
  const bool selected = holds(arguments.selector, "/dn:") || holds(arguments.selector, "/dd:");
  if (selected && runOnSelected(argc, arguments, request, controls, device)) return 0;
  if (arguments.option == "-fusion" && argc == 3) {
    QueryFusionDevInfo(device);
    return 0;
  }
  if (arguments.option == "-fusion") return extendFusionDevice(argc, argv, device);
  if (arguments.option == "-defusion" && argc == 3) return dissolveFusionDevice(device);
  reportInsufficientParameter();
  return 0;
}

}  // namespace

int doWork(int argc, char** argv, DeviceInformation& device) {
  const Request request(Arguments(argc, argv).option);
  Controls controls;
  if ((request.overwrite || request.firmware) && !prepareFirmware(device, controls.firmware)) return -1;
  if (request.needsCalibration() && !prepareCalibration(device, controls.calibration)) return -1;

  const int result = dispatch(argc, argv, request, controls, device);
  if (result != 0) return result;
  if (controls.firmware != nullptr) DaqCtrlBase_dispose(controls.firmware);
  if (controls.calibration != nullptr) DaqCtrlBase_dispose(controls.calibration);
  return 0;
}
