// What the probe says on standard error.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "text/one_line.h"

namespace probe {

/// Writes "velq-probe: ", `problem` on one line, and a line end to standard error.
inline void complain(std::string_view problem) { fprintf(stderr, "velq-probe: %s\n", text::oneLine(problem).c_str()); }

/// Complains, then aborts.
[[noreturn]] inline void stop(std::string_view problem) {
  complain(problem);
  std::abort();
}

}  // namespace probe
