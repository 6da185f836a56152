// Strings of the user, a path or an entry of a list, in a line on standard error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "text/escaped.h"

namespace text {

/// UTF-8 `bytes` with what could end the line or steer a terminal, U+0000 to U+001F and U+007F to U+009F, as \x{..}.
inline std::string oneLine(std::string_view bytes) {
  std::string line;
  for (size_t i = 0; i < bytes.size(); ++i) {
    unsigned c = static_cast<unsigned char>(bytes[i]);
    const unsigned next = i + 1 < bytes.size() ? static_cast<unsigned char>(bytes[i + 1]) : 0;
    if (c == 0xC2 && next >= 0x80 && next < 0xA0) {
      c = next;
      ++i;
    } else if (c >= 0x20 && c != 0x7F) {
      line += bytes[i];
      continue;
    }
    line += shownCode(c);
  }
  return line;
}

}  // namespace text
