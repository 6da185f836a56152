#include "simulator/text.h"

#include <utf8.h>

#include <functional>
#include <iterator>
#include <map>

namespace simulator {

std::wstring fromUtf8(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  utf8::utf8to32(text.begin(), text.end(), std::back_inserter(wide));
  return wide;
}

std::optional<std::string> toUtf8(std::wstring_view text) {
  std::string bytes;
  try {
    utf8::utf32to8(text.begin(), text.end(), std::back_inserter(bytes));
  } catch (const utf8::invalid_code_point&) {
    return std::nullopt;
  }
  return bytes;
}

bool isUtf8(std::string_view text) { return utf8::is_valid(text.begin(), text.end()); }

size_t characterCount(std::string_view text) { return static_cast<size_t>(utf8::distance(text.begin(), text.end())); }

const wchar_t* lasting(std::string_view text) {
  static std::map<std::string, std::wstring, std::less<>> texts;
  const auto known = texts.find(text);
  return (known != texts.end() ? known : texts.emplace(text, fromUtf8(text)).first)->second.c_str();
}

ErrorCode fill(std::string_view text, int32_t capacity, wchar_t* buffer) {
  if (capacity <= 0) return ErrorRefused;
  const std::wstring wide = fromUtf8(text);
  const size_t copied = wide.copy(buffer, static_cast<size_t>(capacity) - 1);
  buffer[copied] = 0;
  return copied == wide.size() ? Automation::Velq::Success : WarningTextCut;
}

}  // namespace simulator
