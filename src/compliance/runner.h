// Runs checks and says how each ended, a line a check on standard output.
#pragma once

#include "compliance/check.h"

namespace compliance {

class Runner {
 public:
  /// A library that crashes ends the process: from now on the check that ran gets its FAIL line, and the exit status
  /// is 1.
  Runner();

  /// Names what runs next, for the line of a crash.
  static void begin(const char* name);

  /// Returns whether all of the checks passed.
  bool run(Checks checks, const Bench& bench);

  /// Runs the checks, or counts them as left out.
  void runIf(bool wanted, Checks checks, const Bench& bench);

  bool hasFailures() const { return failed_ > 0; }

  /// Writes the line that sums up.
  void summarize() const;

 private:
  size_t passed_ = 0;
  size_t failed_ = 0;
  size_t left_ = 0;
};

}  // namespace compliance
