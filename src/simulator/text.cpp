#include "simulator/text.h"

#include <functional>
#include <map>

namespace simulator {

namespace {

bool isContinuation(char byte) { return (byte & 0xC0) == 0x80; }

bool isCharacter(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

void appendUtf8(std::string& bytes, char32_t c) {
  const auto push = [&](char32_t byte) { bytes += static_cast<char>(byte); };
  const auto pushContinuation = [&](int shift) { push(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) return push(c);
  if (c < 0x800) {
    push(0xC0 | c >> 6);
  } else {
    if (c < 0x10000) {
      push(0xE0 | c >> 12);
    } else {
      push(0xF0 | c >> 18);
      pushContinuation(12);
    }
    pushContinuation(6);
  }
  pushContinuation(0);
}

}  // namespace

std::wstring fromUtf8(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (const char byte : text) {
    const auto bits = static_cast<unsigned char>(byte);
    if (isContinuation(byte) && !wide.empty())
      wide.back() = static_cast<wchar_t>(wide.back() << 6 | (bits & 0x3F));
    else
      wide += static_cast<wchar_t>(bits < 0x80   ? bits
                                   : bits < 0xE0 ? bits & 0x1F
                                   : bits < 0xF0 ? bits & 0x0F
                                                 : bits & 0x07);
  }
  return wide;
}

std::optional<std::string> toUtf8(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (const wchar_t c : text) {
    if (!isCharacter(static_cast<char32_t>(c))) return std::nullopt;
    appendUtf8(bytes, static_cast<char32_t>(c));
  }
  return bytes;
}

size_t characterCount(std::string_view text) {
  size_t count = 0;
  for (const char byte : text) count += !isContinuation(byte);
  return count;
}

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
