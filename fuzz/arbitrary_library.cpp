// A device library that answers what its input says: any status, null, any number, any text. Without input, or behind
// its end, it answers as others do, except that no text it fills is terminated. It crosses no memory of its own.
#include <velq/fill_missing.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <span>
#include <type_traits>

using namespace Automation::Velq;

/// What is left of the input. A process begins with what HOSTILE holds.
std::span<const uint8_t> answers;

namespace {

// The next byte, from 0 to `highest`; 0 when there is none.
unsigned choose(unsigned highest) {
  if (answers.empty()) return 0;
  const unsigned chosen = answers.front() % (highest + 1);
  answers = answers.subspan(1);
  return chosen;
}

template <typename Value>
Value oneOf(std::initializer_list<Value> values) {
  return values.begin()[choose(static_cast<unsigned>(values.size() - 1))];
}

// Elements of every array: nodes of installed devices, values, and handles. Short texts keep patterns that take
// exponential time within bounds.
struct alignas(uint64_t) Element : InstalledDeviceNode {};
Element nodes[] = {{{.Private = {}, .Description = L"AB-1"}},
                   {{.Private = {}, .Description = L"a(b)*#2"}},
                   {{.Private = {}, .Description = L"AB-23"}},
                   {{.Private = {}, .Description = L"\u00FC\U0001F527"}}};

const wchar_t* text() {
  const wchar_t* const tooLong = L"sixty-four characters and a few more, which no record has room for, ever";
  return oneOf<const wchar_t*>({L"AI.Auto", L"AO.Auto x", L"", nullptr, tooLong, L"\u00FC%S%n", L"AB-1"});
}

ErrorCode status() {
  return ErrorCode{oneOf<uint32_t>({Success, WarningFirmwareNotNewer, 1, 0xBFFFFFFF, FirstFailure, ErrorDeviceBusy,
                                    ErrorCannotFuse, ErrorFileUnreadable, UINT32_MAX, ErrorFirmwareWrongDevice})};
}

int32_t number() { return oneOf({0, 1, -1, 256, 2, INT32_MAX, INT32_MIN}); }

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
  const size_t count = std::min<size_t>(answers.empty() ? SIZE_MAX : choose(255), static_cast<size_t>(capacity));
  std::wmemset(buffer, static_cast<wchar_t>(oneOf({0 + 'x', 0 + '#', 0 + ' ', 0xFC, 0x1F527, -1})), count);
  return status();
}

constexpr ObjectTable makeObjects() {
  ObjectTable table = {};
  table.DeviceCtrl_getDescription = table.DeviceCtrl_getBoardVersion = table.DeviceCtrl_getDriverVersion = fill;
  table.DeviceCtrl_getDllVersion = table.DeviceCtrl_getLocation = fill;
  table.DaqCtrlBase_getSelectedDevice = [](DaqCtrlBase*, DeviceInformation* record) {
    record->DeviceNumber = number();
    return fill(nullptr, 64, record->Description);
  };
  table.FirmwareItem_getProgress = [](FirmwareItem*) {
    return answers.empty() ? 100 : oneOf({0, -101, -1, -1001, -1002, 5, 99, 100, INT32_MIN, INT32_MAX});
  };
  table.CalibrationItem_getState = [](CalibrationItem*, int64_t* value, int32_t* detail, uint32_t* codes) {
    *value = *detail = number();
    std::fill_n(codes, 15, static_cast<uint32_t>(number()));
    return static_cast<CalibrationState>(choose(3));
  };
  table.Array_getLength = [](Array*) { return 3 - static_cast<int32_t>(choose(5)); };
  table.Array_getItem = [](Array*, int32_t index) -> void* {
    return choose(31) == 31 ? nullptr : &nodes[static_cast<size_t>(index) % std::size(nodes)];
  };
  fillMissing<Anything>(table);
  return table;
}

constexpr FunctionTable makeFunctions() {
  FunctionTable table = {};
  table.CvxIsFusionDevice = [](int32_t) { return answers.empty() ? ErrorDeviceBusy : status(); };
  table.CvxFusionDeviceGetChildren = [](int32_t, int32_t* count, int32_t* children) {
    for (int32_t i = 0; i < 256; i += 51) children[i] = number();
    *count = number();
    return status();
  };
  fillMissing<Anything>(table);
  return table;
}

constexpr FunctionTable Functions = makeFunctions();
constexpr ObjectTable Objects = makeObjects();
constexpr LibraryTable Tables = {.functions = &Functions, .objects = &Objects};

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() {
  if (const char* const input = std::getenv("HOSTILE"))
    answers = {reinterpret_cast<const uint8_t*>(input), std::strlen(input)};
  return &Tables;
}
