// The simulator with strings that real libraries have and rigs have not.
#include <velq/author.h>

#define CvxQuellisLibInitialize simulatorTables
#include "../src/simulator/library/tables.cpp"
#undef CvxQuellisLibInitialize

using namespace Automation::Velq;

const LibraryTable* CvxQuellisLibInitialize() {
  static ObjectTable objects = Objects;
  objects.FirmwareItem_getVersion = [](FirmwareItem*) { return L"0x12"; };
  objects.FirmwareItem_getNotice = [](FirmwareItem*) { return L"\xD800"; };
  // Longer than any room, and without a terminator.
  objects.DeviceCtrl_getLocation = [](DeviceCtrl* device, int32_t capacity, wchar_t* text) {
    std::fill_n(text, capacity, L'x');
    return Objects.DeviceCtrl_getDeviceNumber(device) == 10 ? WarningTextCut : ErrorNotOffered;
  };
  static const LibraryTable odd = {.functions = &Functions, .objects = &objects};
  return &odd;
}
