// Runs checks, each in a process of its own, and reports on standard output how each ended, as the Test Anything
// Protocol has it.
#pragma once

#include <chrono>
#include <string>

namespace compliance {

/// Checks the library in the file `path`. A call may take `limit`. Checks that change devices run only if `writes`, and
/// the devices are restored after each that has not passed. Returns 0 when no check has failed, 1 otherwise, and 128
/// plus the number of the signal with which the user has ended them. Throws std::system_error, also when nothing can be
/// printed.
int runChecks(const std::string& path, std::chrono::seconds limit, bool writes);

}  // namespace compliance
