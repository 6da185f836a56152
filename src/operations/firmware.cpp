#include "operations/firmware.h"

#include <velq/velq.h>

#include <cstdio>

#include "base/arguments.h"
#include "base/console.h"
#include "base/conversion.h"
#include "operations/library_text.h"

using namespace Automation::Velq;

namespace {

// Codes of FirmwareItem_getProgress; those above 0 are percents.
constexpr int32_t Started = 0;
constexpr int32_t StartedKeepPolling = -101;
constexpr int32_t Aborted = -1;
constexpr int32_t NothingLoaded = -1001;
constexpr int32_t Busy = -1002;

constexpr int32_t StartMode = 2;
constexpr unsigned PollSeconds = 500;

// One chip's slot. It is asked for anew at every use: libraries have come to see these calls.
class Chip {
 public:
  Chip(Array* items, int32_t index) : items_(items), index_(index) {}
  operator FirmwareItem*() const { return static_cast<FirmwareItem*>(Array_getItem(items_, index_)); }

 private:
  Array* items_;
  int32_t index_;
};

// False when the load failed; a warning is reported the same way but goes on.
bool load(const Chip& chip, const std::string& path) {
  const WideText widePath = widen(path);
  const ErrorCode status = FirmwareItem_loadFile(chip, widePath.data());
  if (status == Success) return true;
  std::string message;
  GetMsg(status, message);
  puts(message.c_str());
  printf("Load firmware failed!ErrorLevel = %d\n", 3);
  return !failed(status);
}

void confirmNotice(const Chip& chip) {
  puts("Notice:");
  printf("%S\n", FirmwareItem_getNotice(chip));
  FirmwareItem_confirmNotice(chip);
}

// Only 100 percent ends this: a chip that reports an error halfway may still come back, and a half-written one must not
// be left.
void followProgress(const Chip& chip) {
  printf("Progressing:    ");
  int32_t percent = 0;
  while (percent <= 99) {
    pauseSeconds(PollSeconds);
    percent = FirmwareItem_getProgress(chip);
    if (percent > 0) printf("\b\b\b\b%3d%%", percent);
    std::fflush(stdout);
  }
  puts("\nFirmware Download OK. Please follow the previous Notice to do the operation.");
}

int reportStart(const Chip& chip) {
  switch (FirmwareItem_getProgress(chip)) {
    case Started:
    case StartedKeepPolling:
      followProgress(chip);
      return 0;
    case Busy:
      puts("Device is busy! Can't run firmware download!");
      return 0;
    case NothingLoaded:
      printf("Firmware has not be loaded or the firmware is invalid! Can't run firmware download! ErrorLevel = %d\n",
             3);
      return 3;
    case Aborted:
      printf("Operation abort or disturbed! ErrorLevel = %d\n", 100);
      return 100;
    default:
      return 0;
  }
}

}  // namespace

void QueryFwInfo(FirmwareCtrls* control, DeviceInformation& device) {
  puts("Query firmware information Start!");
  Array* const items = FirmwareCtrls_getFirmwares(control);
  if (items == nullptr) return;
  const int32_t count = Array_getLength(items);
  for (int32_t i = 0; i < count; ++i) {
    const Chip chip(items, i);
    const wchar_t* const description = FirmwareItem_getDescription(chip);
    const wchar_t* const version = FirmwareItem_getVersion(chip);
    TextBuffer<100> deviceDescription;
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
  if (!isAllDigits(chip)) {
    puts("You should input a digit to represent a firmware item:");
    return -1;
  }
  const int32_t chipNumber = parseNumber(chip);
  Array* const items = FirmwareCtrls_getFirmwares(control);
  if (items == nullptr) return -1;
  if (chipNumber >= Array_getLength(items)) {
    puts("Please input correct firmware file no!");
    return -1;
  }
  const Chip item(items, chipNumber);
  FirmwareItem_getVersion(item);
  if (!load(item, afterColon(option))) return 0;
  printf("Overwrite the firmware of device:%d\n(%S),chip:%d\n", device.DeviceNumber, device.Description, chipNumber);
  confirmNotice(item);
  const WideText widePassword = widen(password);
  if (failed(FirmwareItem_start(item, StartMode, widePassword.data()))) return 0;
  return reportStart(item);
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
