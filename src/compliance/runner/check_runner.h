// Runs checks, each in a process of its own, and reports on standard output how each ended, as the Test Anything
// Protocol has it.
#pragma once

#include <chrono>
#include <functional>
#include <set>
#include <string>

#include "compliance/checks/check.h"
#include "compliance/process/supervisor.h"

namespace compliance {

/// How a check ended.
struct Verdict {
  std::string finding;  ///< empty when the check has passed
  std::string refused;  ///< what the library refused, so that it was not tried; empty when there is none
  unsigned refusals = 0;
};

class CheckRunner {
 public:
  /// Of the library in the file `path`; a call may take `limit`, and a check may change devices if `writes`. Prints the
  /// plan. Throws std::system_error.
  CheckRunner(const std::string& path, std::chrono::seconds limit, bool writes);

  /// Runs the check if its needs are met, and reports what it lacks otherwise. Restores the devices after one that
  /// writes and has not passed. Throws std::system_error when nothing can be printed.
  void run(const Check& check);

  /// Judges what the library has done to its process meanwhile, and prints the counts. Returns whether no check has
  /// failed.
  bool finish();

  /// The signal with which the user has ended the checks; 0 for none.
  int interruption() const { return interruption_; }

 private:
  std::string unmetNeed(const Check& check) const;
  Verdict runOne(const Check& check);
  std::string findingOf(const Ending& ending);
  std::string disturbanceIn(const Ending& ending) const;
  /// In a process of its own that has loaded the library.
  Ending runLoaded(const std::function<void()>& work);
  /// All that can be read; an empty result where the process has ended early.
  Ending look();
  /// What such a look, after a check that writes, shows to be otherwise than before; empty when nothing is.
  std::string lossIn(const Ending& look);
  void restore(const Ending& first);
  std::string numbered(const char* result, const char* name) const;
  void report(const char* name, const Verdict& verdict);

  const std::string path_;
  const bool writes_;
  Report& report_;
  Supervisor supervisor_;
  Snapshot before_;
  std::set<std::string> passed_;
  std::string disturbance_;       ///< the first of any check
  std::string slowestOperation_;  ///< of all checks
  int64_t slowest_ = 0;           ///< in nanoseconds
  size_t failed_ = 0;
  size_t skipped_ = 0;
  size_t refusals_ = 0;
  size_t hangs_ = 0;
  int interruption_ = 0;
  bool isAltered_ = false;  ///< devices could not be restored
};

}  // namespace compliance
