#include "text/utf8.h"

#include <utf8.h>

#include <iterator>

namespace text {

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
    // A surrogate, or an element beyond U+10FFFF.
    return std::nullopt;
  }
  return bytes;
}

bool isUtf8(std::string_view text) { return utf8::is_valid(text.begin(), text.end()); }

size_t characterCount(std::string_view text) { return static_cast<size_t>(utf8::distance(text.begin(), text.end())); }

}  // namespace text
