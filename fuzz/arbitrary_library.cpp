// A device library, to be linked in, that answers what the input says: any status, null, any number, any text.
#include <velq/fill_missing.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <type_traits>

#include "answers.h"

using namespace Automation::Velq;

namespace {

// The next byte, from 0 to `highest`; 0 when there is none.
unsigned choose(unsigned highest) {
  if (answers.empty()) return 0;
  const unsigned chosen = answers.front() % (highest + 1);
  answers = answers.subspan(1);
  return chosen;
}

template <typename Value, size_t Count>
Value oneOf(const Value (&values)[Count]) {
  return values[choose(Count - 1)];
}

// Elements of every array: nodes of installed devices, values, and handles. Short texts keep patterns that take
// exponential time within bounds.
struct alignas(uint64_t) Element : InstalledDeviceNode {};
Element nodes[] = {{{.Private = {}, .Description = L"AB-1"}},
                   {{.Private = {}, .Description = L"a(b)*#2"}},
                   {{.Private = {}, .Description = L"AB-23"}},
                   {{.Private = {}, .Description = L"\u00FC\U0001F527"}}};

const wchar_t* text() {
  static const wchar_t longText[] = L"sixty-four characters and a few more, which no record has room for, ever";
  static const wchar_t* const texts[] = {L"AI.Auto", L"AO.Auto x", L"", nullptr, longText, L"\u00FC%S%n", L"AB-1"};
  return oneOf(texts);
}

ErrorCode status() {
  static const uint32_t statuses[] = {Success,
                                      WarningFirmwareNotNewer,
                                      1,
                                      0xBFFFFFFF,
                                      FirstFailure,
                                      ErrorDeviceBusy,
                                      ErrorCannotFuse,
                                      ErrorFileUnreadable,
                                      UINT32_MAX,
                                      ErrorFirmwareWrongDevice};
  return ErrorCode{oneOf(statuses)};
}

int32_t number() {
  static const int32_t numbers[] = {0, 1, -1, 256, 2, INT32_MAX, INT32_MIN};
  return oneOf(numbers);
}

struct Anything {
  template <typename Result>
  static Result give() {
    if constexpr (std::is_same_v<Result, ErrorCode>)
      return status();
    else if constexpr (std::is_same_v<Result, const wchar_t*>)
      return text();
    else if constexpr (std::is_pointer_v<Result>)
      return choose(7) == 7 ? nullptr : reinterpret_cast<Result>(nodes);
    else
      return static_cast<Result>(number());
  }
};

// Any characters, with a terminator or without.
ErrorCode fill(DeviceCtrl*, int32_t capacity, wchar_t* buffer) {
  const auto count = std::min<size_t>(choose(255), static_cast<size_t>(capacity));
  std::wmemset(buffer, static_cast<wchar_t>(oneOf<int>({'x', '#', ' ', 0xFC, 0x1F527, -1})), count);
  return status();
}

ErrorCode fillRecord(DaqCtrlBase*, DeviceInformation* record) {
  record->DeviceNumber = number();
  return fill(nullptr, 64, record->Description);
}

ErrorCode fillChildren(int32_t, int32_t* count, int32_t* children) {
  for (int32_t i = 0; i < 256; i += 51) children[i] = number();
  *count = number();
  return status();
}

int32_t progress(FirmwareItem*) {
  if (answers.empty()) return 100;
  static const int32_t values[] = {0, -101, -1, -1001, -1002, 5, 99, 100, INT32_MIN, INT32_MAX};
  return oneOf(values);
}

CalibrationState state(CalibrationItem*, int64_t* value, int32_t* detail, uint32_t* codes) {
  *value = *detail = number();
  std::fill_n(codes, 15, static_cast<uint32_t>(number()));
  return static_cast<CalibrationState>(choose(3));
}

constexpr ObjectTable makeObjects() {
  ObjectTable table = {};
  table.DeviceCtrl_getDescription = table.DeviceCtrl_getBoardVersion = table.DeviceCtrl_getDriverVersion = fill;
  table.DeviceCtrl_getDllVersion = table.DeviceCtrl_getLocation = fill;
  table.DaqCtrlBase_getSelectedDevice = fillRecord;
  table.FirmwareItem_getProgress = progress;
  table.CalibrationItem_getState = state;
  table.Array_getLength = [](Array*) { return 3 - static_cast<int32_t>(choose(5)); };
  table.Array_getItem = [](Array*, int32_t index) -> void* {
    return choose(31) == 31 ? nullptr : &nodes[static_cast<size_t>(index) % std::size(nodes)];
  };
  fillMissing<Anything>(table);
  return table;
}

constexpr FunctionTable makeFunctions() {
  FunctionTable table = {};
  table.CvxFusionDeviceGetChildren = fillChildren;
  fillMissing<Anything>(table);
  return table;
}

constexpr FunctionTable Functions = makeFunctions();
constexpr ObjectTable Objects = makeObjects();
constexpr LibraryTable Tables = {.functions = &Functions, .objects = &Objects};

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() { return &Tables; }
