#include "operations/firmware.h"

#include <velq/velq.h>

#include <cstdio>

#include "operations/conversion.h"
#include "operations/elements.h"
#include "operations/library_text.h"
#include "operations/number.h"
#include "qutil/arguments.h"
#include "qutil/console.h"

using namespace Automation::Velq;

namespace {

// The only value that libraries are passed.
constexpr int32_t StartMode = 2;
// Quirk: a shorter overwrite takes as long, too.
constexpr unsigned ProgressPollSeconds = 500;

using Chips = Elements<FirmwareItem>;

// False when the load failed. Quirk: a warning is reported as a failure, but the overwrite goes on.
bool load(const Chips& chips, int32_t number, const std::string& path) {
  const WideString widePath = widen(path);
  const ErrorCode status = FirmwareItem_loadFile(chips[number], widePath.data());
  if (status == Success) return true;
  std::string message;
  GetMsg(status, message);
  puts(message.c_str());
  printf("Load firmware failed!ErrorLevel = %d\n", 3);
  return !failed(status);
}

void confirmNotice(const Chips& chips, int32_t number) {
  puts("Notice:");
  printf("%S\n", FirmwareItem_getNotice(chips[number]));
  FirmwareItem_confirmNotice(chips[number]);
}

// Quirk: only 100 percent ends this, no failure does.
void followProgress(const Chips& chips, int32_t number) {
  printf("Progressing:    ");
  int32_t percent = 0;
  while (percent < ProgressDone) {
    pauseSeconds(ProgressPollSeconds);
    percent = FirmwareItem_getProgress(chips[number]);
    if (percent > 0) printf("\b\b\b\b%3d%%", percent);
    std::fflush(stdout);
  }
  puts("\nFirmware Download OK. Please follow the previous Notice to do the operation.");
}

int reportStart(const Chips& chips, int32_t number) {
  switch (FirmwareItem_getProgress(chips[number])) {
    case ProgressStarted:
    case ProgressKeepPolling:
      followProgress(chips, number);
      return 0;
    case ProgressBusy:
      puts("Device is busy! Can't run firmware download!");
      return 0;
    case ProgressNothingLoaded:
      printf("Firmware has not be loaded or the firmware is invalid! Can't run firmware download! ErrorLevel = %d\n",
             3);
      return 3;
    case ProgressAborted:
      printf("Operation abort or disturbed! ErrorLevel = %d\n", 100);
      return 100;
    default:
      return 0;
  }
}

}  // namespace

void QueryFwInfo(FirmwareCtrls* control, DeviceInformation& device) {
  puts("Query firmware information Start!");
  const Chips chips(FirmwareCtrls_getFirmwares(control));
  for (int32_t i = 0; i < chips.length(); ++i) {
    const wchar_t* const description = FirmwareItem_getDescription(chips[i]);
    const wchar_t* const version = FirmwareItem_getVersion(chips[i]);
    TextBuffer<100> deviceDescription;
    // Quirk: read again for every chip, although it cannot change.
    DeviceCtrl* const bound = DaqCtrlBase_getDevice(control);
    if (bound == nullptr) return;
    if (failed(DeviceCtrl_getDescription(bound, deviceDescription.capacity, deviceDescription.data()))) return;
    printf("Firmware information in device:%d(%S)\n", device.DeviceNumber, deviceDescription.data());
    printf("Chip:%d\n", i);
    printf("Description:%S\n", description);
    printf("version:%S\n", version);
  }
}

int FwDownload(FirmwareCtrls* control, std::string option, std::string chip, std::string password,
               DeviceInformation& device) {
  puts("Start Firmware Download!");
  // An argument that is left out is empty, which counts as chip 0.
  if (!isAllDigits(chip)) {
    puts("You should input a digit to represent a firmware item:");
    return -1;
  }
  const int32_t chipNumber = parseNumber(chip);
  Array* const items = FirmwareCtrls_getFirmwares(control);
  if (items == nullptr) return -1;
  const Chips chips(items);
  if (chipNumber >= chips.length()) {
    puts("Please input correct firmware file no!");
    return -1;
  }
  // Quirk: read before every load, and not used.
  FirmwareItem_getVersion(chips[chipNumber]);
  if (!load(chips, chipNumber, afterColon(option))) return 0;
  printf("Overwrite the firmware of device:%d\n(%S),chip:%d\n", device.DeviceNumber, device.Description, chipNumber);
  confirmNotice(chips, chipNumber);
  const WideString widePassword = widen(password);
  if (failed(FirmwareItem_start(chips[chipNumber], StartMode, widePassword.data()))) return 0;
  return reportStart(chips, chipNumber);
}

void GetMsg(ErrorCode status, std::string& message) {
  switch (status) {
    case WarningFirmwareNotNewer:
      message = "Warning: The loaded firmware is not newer than the existing one!";
      break;
    case ErrorDeviceBusy:
      message = "Error: The device is busy now, it can not be opened!";
      break;
    case ErrorFileUnreadable:
      message = "Error: The specified file can not open!";
      break;
    case ErrorFirmwareWrongDevice:
      message = "Error: This Firmware is not for the Device!";
      break;
    default:
      message = "Error: Unknown Error is occured!";
  }
}
