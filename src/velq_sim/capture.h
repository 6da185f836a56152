// "--capture": copies what is installed.
#pragma once

#include <string>

namespace velq_sim {

/// Reads all devices of the device library that qutil would load here, changing nothing, and writes them as a rig to a
/// new file, whole or not at all; "-" is standard output, whose errors are left to the caller. What a rig cannot hold
/// is changed as little as possible, what cannot be read is left out, and each is a line on standard error. Throws
/// Failure when nothing was written.
void capture(const std::string& file);

}  // namespace velq_sim
