// The form of strings and statuses in messages, traces and reports of checks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace text {

/// "0xe0000001": at least `digits` digits.
inline std::string hexadecimal(uint64_t value, int digits = 8) {
  char shown[19];
  std::snprintf(shown, sizeof shown, "0x%0*llx", digits, static_cast<unsigned long long>(value));
  return shown;
}

/// A character that cannot be shown as it is, by its code: "\x{..}".
inline std::string shownCode(unsigned c) {
  char code[13];
  std::snprintf(code, sizeof code, "\\x{%x}", c);
  return code;
}

/// The characters before the terminator, at most `longest`, in double quotes: printable ASCII as it is but for \" and
/// \\, everything else as \x{..}. "null" for null.
inline std::string escaped(const wchar_t* wide, size_t longest = SIZE_MAX) {
  if (wide == nullptr) return "null";
  std::string shown = "\"";
  for (size_t i = 0; i < longest && wide[i] != 0; ++i) {
    const auto c = static_cast<unsigned>(wide[i]);
    if (c == '"' || c == '\\') shown += '\\';
    if (c >= 0x20 && c < 0x7F)
      shown += static_cast<char>(c);
    else
      shown += shownCode(c);
  }
  return shown + '"';
}

/// The string of which escaped() returned `shown`: neither null nor cut.
inline std::wstring unescaped(const std::string& shown) {
  std::wstring wide;
  for (size_t i = 1; i + 1 < shown.size(); ++i) {
    const bool isCode = shown.compare(i, 3, "\\x{") == 0;
    if (shown[i] == '\\' && !isCode) ++i;
    wide +=
        static_cast<wchar_t>(isCode ? std::strtoul(&shown[i + 3], nullptr, 16) : static_cast<unsigned char>(shown[i]));
    if (isCode) i = shown.find('}', i);
  }
  return wide;
}

}  // namespace text
