#include "probe/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "probe/operation.h"

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

TraceFile::TraceFile(const std::string& path) {
  if (path.empty()) return;
  descriptor_ = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor_ < 0) stop("VELQ_TRACE: " + path + ": cannot be opened: " + std::strerror(errno));
}

TraceFile::~TraceFile() {
  if (isOpen()) close(descriptor_);
}

void TraceFile::write(std::string line) {
  if (!isOpen()) return;
  line += '\n';
  if (::write(descriptor_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
    stop(std::string("VELQ_TRACE: cannot be written: ") + std::strerror(errno));
}

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
