// What the probe says on standard error.
#pragma once

#include <string>
#include <string_view>

namespace probe {

/// `text` with everything escaped that could end its line or steer a terminal.
std::string oneLine(std::string_view text);

/// Writes "velq-probe: ", `problem` on one line, and a line end to standard error.
void complain(std::string_view problem);

/// Complains, then aborts.
[[noreturn]] void stop(std::string_view problem);

}  // namespace probe
