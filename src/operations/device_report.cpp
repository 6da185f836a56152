#include "operations/device_report.h"

#include <velq/velq.h>

#include <cstdio>
#include <cwchar>

#include "operations/library_text.h"

using namespace Automation::Velq;

namespace {

using TextGetter = ErrorCode (*)(DeviceCtrl*, int32_t, wchar_t*);

// Fills the buffer from the library, with "N/A" after any other status than success, warnings included.
template <int32_t Capacity>
void readOrNotAvailable(TextGetter getter, DeviceCtrl* device, TextBuffer<Capacity>& text) {
  if (getter(device, Capacity, text.data()) != Success) std::wcscpy(text.data(), L"N/A");
}

// Quirk: reads the length before every element, although it cannot change.
template <typename Value>
void printEach(Array* values, void (*print)(Value), const char* missing) {
  if (values == nullptr) {
    puts(missing);
    return;
  }
  for (int32_t i = 0; i < Array_getLength(values); ++i) {
    const auto* const value = static_cast<const Value*>(Array_getItem(values, i));
    if (value == nullptr) return;
    print(*value);
  }
}

void printBaseAddress(uint64_t address) { printf("Base address: 0x%llx\n", static_cast<unsigned long long>(address)); }
void printInterrupt(int32_t interrupt) { printf("Interrupt: %d\n", interrupt); }

void printVersions(DeviceCtrl* device) {
  TextBuffer<10> version;
  if (DeviceCtrl_getDriverVersion(device, version.capacity, version.data()) == Success)
    printf("Driver version: %S\n", version.data());
  else
    puts("Driver version: N/A");

  // Quirk: a capacity of 10, although there is room for 100.
  TextBuffer<100> library;
  if (DeviceCtrl_getDllVersion(device, 10, library.data()) == Success)
    printf("DLL version: %S\n", library.data());
  else
    puts("DLL version: N/A");

  TextBuffer<10> board;
  readOrNotAvailable(DeviceCtrl_getBoardVersion, device, board);
  printf("Board version: %S\n", board.data());
}

}  // namespace

int QueryDeviceInfo(DeviceInformation& device) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, device.OpenMode);
  if (opened == nullptr) {
    printf("Cannot find specifiled Quellis device %d!(Errorleve= %d)\n", device.DeviceNumber, 2);
    return -1;
  }
  TextBuffer<50> description;
  readOrNotAvailable(DeviceCtrl_getDescription, opened, description);
  printf("Detail information of device %d (%S)\n", DeviceCtrl_getDeviceNumber(opened), description.data());
  printf("Device Number: %d\n", DeviceCtrl_getDeviceNumber(opened));
  printf("Description: %S\n", description.data());
  printf("ProductID:0x%X\n", static_cast<unsigned>(DeviceCtrl_getProductId(opened)));
  printf("Board ID: %d\n", DeviceCtrl_getBoardId(opened));
  printVersions(opened);

  TextBuffer<100> location;
  readOrNotAvailable(DeviceCtrl_getLocation, opened, location);
  printf("Location: %S\n", location.data());
  printEach(DeviceCtrl_getBaseAddresses(opened), printBaseAddress, "Base address: N/A");
  printEach(DeviceCtrl_getInterrupts(opened), printInterrupt, "Interrupt: N/A");
  // Quirk: the device is never released.
  return 0;
}
