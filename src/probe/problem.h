// What the probe says on standard error.
#pragma once

#include <string_view>

namespace probe {

/// Writes "velq-probe: ", `problem` on one line, and a line end to standard error.
void complain(std::string_view problem);

/// Complains, then aborts.
[[noreturn]] void stop(std::string_view problem);

}  // namespace probe
