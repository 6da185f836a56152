// A library that keeps no rule it can break without crossing memory of its own. HOSTILE says which.
#include <velq/fill_missing.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <type_traits>

using namespace Automation::Velq;

namespace {

bool is(const char* behaviour) { return std::strstr(std::getenv("HOSTILE"), behaviour) != nullptr; }

char object[1 << 12];
wchar_t longText[5000];

struct Anything {
  template <typename Result>
  static Result give() {
    if constexpr (std::is_same_v<Result, const wchar_t*>)
      return is("null") ? nullptr : longText;
    else if constexpr (std::is_pointer_v<Result>)
      return is("null") ? nullptr : reinterpret_cast<Result>(object);
    else
      return Result();  // of a status: Success
  }
};

// Fills the whole capacity and leaves the terminator out.
ErrorCode fillUnterminated(DeviceCtrl*, int32_t capacity, wchar_t* text) {
  std::wmemset(text, L'x', static_cast<size_t>(capacity));
  return Success;
}

ErrorCode fillRecord(DaqCtrlBase*, DeviceInformation* record) {
  std::wmemset(record->Description, L'x', 64);
  return Success;
}

ErrorCode manyChildren(int32_t, int32_t* count, int32_t*) {
  *count = is("negative") ? INT32_MIN : INT32_MAX;
  return Success;
}

// The object array is honoured to its third element, so that loops over enormous lengths show whether they stop.
int32_t length(Array*) { return is("negative") ? -5 : is("enormous") ? INT32_MAX : 2; }
void* item(Array*, int32_t index) { return index < 2 ? object : nullptr; }

constexpr ObjectTable makeObjects() {
  ObjectTable table = {};
  table.DeviceCtrl_getDescription = table.DeviceCtrl_getBoardVersion = fillUnterminated;
  table.DeviceCtrl_getDriverVersion = table.DeviceCtrl_getDllVersion = fillUnterminated;
  table.DeviceCtrl_getLocation = fillUnterminated;
  table.DaqCtrlBase_getSelectedDevice = fillRecord;
  table.Array_getLength = length;
  table.Array_getItem = item;
  fillMissing<Anything>(table);
  return table;
}

constexpr FunctionTable makeFunctions() {
  FunctionTable table = {};
  table.CvxFusionDeviceGetChildren = manyChildren;
  table.CvxIsFusionDevice = [](int32_t) { return is("fusion") ? Success : ErrorDeviceBusy; };
  fillMissing<Anything>(table);
  return table;
}

constexpr FunctionTable Functions = makeFunctions();
constexpr ObjectTable Objects = makeObjects();
constexpr LibraryTable Tables = {.functions = &Functions, .objects = &Objects};

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() {
  std::wmemset(longText, L'y', std::size(longText) - 1);
  std::wmemcpy(longText, L"AI", 2);
  return &Tables;
}
