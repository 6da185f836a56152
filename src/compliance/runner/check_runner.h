// Runs checks, each in a process of its own, and says how each ended, a line a check on standard output.
#pragma once

#include <chrono>
#include <set>
#include <string>

#include "compliance/checks/check.h"
#include "compliance/process/process.h"

namespace compliance {

class CheckRunner {
 public:
  /// Of the library in the file `path`; a check may take `limit`. Throws std::system_error.
  CheckRunner(const std::string& path, std::chrono::seconds limit);
  ~CheckRunner();
  CheckRunner(const CheckRunner&) = delete;
  CheckRunner& operator=(const CheckRunner&) = delete;

  /// Runs the check if its needs are met, and says what it lacks otherwise. Throws std::system_error when nothing can
  /// be said.
  void run(const Check& check);

  /// Says that the check was not run, and why.
  void skip(const Check& check, const std::string& reason);

  /// Judges what the library has done to its process meanwhile, and writes the line that counts. Returns whether no
  /// check has failed.
  bool finish();

 private:
  std::string unmetNeed(const Check& check) const;
  void runOne(const Check& check);
  std::string failureOf(std::optional<int> status);
  void say(const char* verdict, const std::string& line);
  void reportResult(const char* name, const std::string& failure);

  const std::string path_;
  const std::chrono::seconds limit_;
  Report& report_;
  const SharedFile output_;
  const SharedFile firstLook_;
  std::set<std::string> passed_;
  std::string disturbance_;  ///< the first of any check
  size_t failed_ = 0;
  size_t left_ = 0;
  size_t refusals_ = 0;
  size_t timeouts_ = 0;
  bool endsBadly_ = false;  ///< it has been said that the end of the process goes wrong
};

}  // namespace compliance
