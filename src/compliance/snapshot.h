// All that can be read of the devices, to see whether anything has changed.
#pragma once

#include <string>
#include <vector>

namespace compliance {

/// A line for each fact.
using Snapshot = std::vector<std::string>;

Snapshot takeSnapshot();

/// "LINE before, LINE after" for the first fact that differs; empty when none does.
std::string firstDifference(const Snapshot& before, const Snapshot& after);

}  // namespace compliance
