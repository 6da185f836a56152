// The minimal library with one fault at a time, named by BAD_LIBRARY, and with a second exported symbol always: what
// the probe's faults cannot bring about.
#include <cstdlib>
#include <cstring>

#define CvxQuellisLibInitialize exportedByMistake
#include "../examples/minimal-library/minimal_library.cpp"
#undef CvxQuellisLibInitialize

extern "C" __attribute__((visibility("default"))) const LibraryTable* CvxQuellisLibInitialize();

namespace {

int32_t boardId = 0;

ErrorCode overrun(DeviceCtrl*, int32_t capacity, wchar_t* text) {
  text[capacity] = 0;
  return fill(L"1.0-min", capacity, text);
}

ErrorCode unterminated(DeviceCtrl*, int32_t capacity, wchar_t* text) {
  std::wmemset(text, L'x', static_cast<size_t>(capacity));
  return TextCut;
}

ErrorCode silentlyCut(DeviceCtrl*, int32_t capacity, wchar_t* text) {
  fill(L"1.0-min", capacity, text);
  return Success;
}

void* moving(Array*, int32_t) {
  static InstalledDeviceNode nodes[2] = {board, board};
  static int calls = 0;
  return &nodes[++calls % 2];
}

ErrorCode changing(DeviceCtrl*, int32_t capacity, wchar_t* text) {
  ++boardId;
  return fill(L"here", capacity, text);
}

void spoil(ObjectTable& table, const char* fault) {
  const auto is = [&](const char* name) { return std::strcmp(fault, name) == 0; };
  if (is("hole")) table.CalibrationItem_getState = nullptr;
  if (is("crash")) table.DeviceCtrl_getProductId = [](DeviceCtrl*) -> int32_t { std::abort(); };
  if (is("overrun")) table.DeviceCtrl_getDllVersion = overrun;
  if (is("unterminated")) table.DeviceCtrl_getDllVersion = unterminated;
  if (is("silently-cut")) table.DeviceCtrl_getDllVersion = silentlyCut;
  if (is("moving")) table.Array_getItem = moving;
  if (is("changing")) table.DeviceCtrl_getLocation = changing;
  table.DeviceCtrl_getBoardId = [](DeviceCtrl*) { return boardId; };
}

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() {
  static ObjectTable objects = Objects;
  static const LibraryTable tables = {.functions = &Functions, .objects = &objects};
  if (const char* const fault = std::getenv("BAD_LIBRARY")) spoil(objects, fault);
  return &tables;
}
