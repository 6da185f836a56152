// Runs checks, each in a process of its own, and reports on standard output how each ended, as the Test Anything
// Protocol has it.
#pragma once

#include <chrono>
#include <string>

namespace compliance {

/// How all checks together ended.
struct Outcome {
  bool isGood = false;   ///< no check has failed
  int interruption = 0;  ///< the signal with which the user has ended them; 0 for none
};

/// Checks the library in the file `path`. A call may take `limit`. Checks that change devices run only if `writes`, and
/// the devices are restored after each that has not passed. Throws std::system_error, also when nothing can be printed.
Outcome runChecks(const std::string& path, std::chrono::seconds limit, bool writes);

}  // namespace compliance
