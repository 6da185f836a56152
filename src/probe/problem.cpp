#include "probe/problem.h"

#include <cstdio>
#include <cstdlib>

namespace probe {

std::string oneLine(std::string_view text) {
  std::string line;
  for (size_t i = 0; i < text.size(); ++i) {
    unsigned c = static_cast<unsigned char>(text[i]);
    const unsigned next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
    // U+0080 to U+009F in UTF-8 steer terminals as the characters below the blank do.
    const bool isWideControl = c == 0xC2 && next >= 0x80 && next < 0xA0;
    if (c >= 0x20 && c != 0x7F && !isWideControl) {
      line += text[i];
      continue;
    }
    if (isWideControl) {
      c = next;
      ++i;
    }
    char escape[8];
    snprintf(escape, sizeof escape, "\\x{%x}", c);
    line += escape;
  }
  return line;
}

void complain(std::string_view problem) { fprintf(stderr, "velq-probe: %s\n", oneLine(problem).c_str()); }

void stop(std::string_view problem) {
  complain(problem);
  std::abort();
}

}  // namespace probe
