// A whole device library: one board, always there, that can be looked at and never changed, without firmware or
// calibration. Copy this file to start a library of your own.
#include <velq/fill_missing.h>

#include <cwchar>
#include <type_traits>

using namespace Automation::Velq;

namespace {

// Anything from 0xC0000000 up is a failure; this library knows only one.
constexpr ErrorCode NotSupported{0xE0000001};
constexpr ErrorCode TextCut{0xA0000001};

constexpr int32_t BoardNumber = 0;
InstalledDeviceNode board = {.Private = {}, .Description = L"Minimal board"};
uint64_t baseAddresses[] = {0xd000};

// Handles are addresses that only this file understands. Of one board without state one object of each kind is enough.
char deviceObject, installedArray, addressArray;

template <typename Handle>
Handle* handleTo(char& object) {
  return reinterpret_cast<Handle*>(&object);
}

bool isAddressArray(const Array* array) { return static_cast<const void*>(array) == &addressArray; }

// The rule for every text that is filled: at most `capacity` characters with the terminator, a warning when the text
// was cut.
ErrorCode fill(const wchar_t* text, int32_t capacity, wchar_t* buffer) {
  if (capacity <= 0) return NotSupported;
  const size_t room = static_cast<size_t>(capacity) - 1;
  const size_t length = std::wcslen(text);
  std::wmemcpy(buffer, text, length < room ? length : room);
  buffer[length < room ? length : room] = 0;
  return length <= room ? Success : TextCut;
}

bool names(int32_t number, const wchar_t* description) {
  if (number == -1) return description != nullptr && std::wcscmp(description, board.Description) == 0;
  return number == BoardNumber;
}

// What every operation answers that this library does not offer: a failure status, a null or a zero, as the result's
// type has it.
struct Refusal {
  template <typename Result>
  static Result give() {
    if constexpr (std::is_same_v<Result, ErrorCode>)
      return NotSupported;
    else
      return Result();
  }
};

constexpr ObjectTable makeObjects() {
  ObjectTable table = {};
  table.DeviceCtrl_Create = [](int32_t number, const wchar_t* description, AccessMode) -> DeviceCtrl* {
    return names(number, description) ? handleTo<DeviceCtrl>(deviceObject) : nullptr;
  };
  table.DeviceCtrl_getInstalledDevices = [] { return handleTo<Array>(installedArray); };
  table.DeviceCtrl_getDeviceNumber = [](DeviceCtrl*) { return BoardNumber; };
  table.DeviceCtrl_getDescription = [](DeviceCtrl*, int32_t capacity, wchar_t* text) {
    return fill(board.Description, capacity, text);
  };
  table.DeviceCtrl_getProductId = [](DeviceCtrl*) { return 0x100; };
  table.DeviceCtrl_getDllVersion = [](DeviceCtrl*, int32_t capacity, wchar_t* text) {
    return fill(L"1.0-min", capacity, text);
  };
  table.DeviceCtrl_getBaseAddresses = [](DeviceCtrl*) { return handleTo<Array>(addressArray); };
  table.Array_getLength = [](Array*) { return 1; };
  table.Array_getItem = [](Array* array, int32_t index) -> void* {
    if (index != 0) return nullptr;
    return isAddressArray(array) ? static_cast<void*>(&baseAddresses[0]) : &board;
  };
  fillMissing<Refusal>(table);
  return table;
}

constexpr FunctionTable makeFunctions() {
  FunctionTable table = {};
  fillMissing<Refusal>(table);
  return table;
}

constexpr FunctionTable Functions = makeFunctions();
constexpr ObjectTable Objects = makeObjects();
constexpr LibraryTable Tables = {.functions = &Functions, .objects = &Objects};

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() { return &Tables; }
