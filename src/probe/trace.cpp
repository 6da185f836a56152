#include "probe/trace.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace probe {

namespace {

constexpr int64_t MostValues = 256;
constexpr int CodeCount = 15;

std::string format(const char* pattern, unsigned value) {
  char text[24];
  snprintf(text, sizeof text, pattern, value);
  return text;
}

}  // namespace

std::string show(const wchar_t* text, size_t longest) {
  if (text == nullptr) return "null";
  std::string shown = "\"";
  for (size_t i = 0; i < longest && text[i] != 0; ++i) {
    const auto c = static_cast<unsigned>(text[i]);
    if (c == '"' || c == '\\') shown += '\\';
    shown += c >= 0x20 && c < 0x7F ? std::string(1, static_cast<char>(c)) : format("\\x{%x}", c);
  }
  return shown + '"';
}

std::string showHex(uint32_t value) { return format("0x%08x", value); }

std::string show(const DeviceInformation* device) {
  if (device == nullptr) return "null";
  return "{" + std::to_string(device->DeviceNumber) + ", " + std::to_string(device->OpenMode) + ", " +
         std::to_string(device->ModuleIndex) + ", " + show(device->Description, std::size(device->Description)) + "}";
}

std::string show(const int32_t* values, int64_t count) {
  if (values == nullptr) return "null";
  std::string shown = "[";
  for (int64_t i = 0; i < std::min(count, MostValues); ++i) shown += (i == 0 ? "" : ", ") + std::to_string(values[i]);
  return shown + "]";
}

std::string showCodes(const uint32_t* codes) {
  int count = CodeCount;
  while (count > 1 && codes[count - 1] == 0) --count;
  std::string shown = "[";
  for (int i = 0; i < count; ++i) shown += (i == 0 ? "" : ", ") + showHex(codes[i]);
  return shown + "]";
}

}  // namespace probe
