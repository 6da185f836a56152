// Runs checks, each in a process of its own, and says how each ended, a line a check on standard output.
#pragma once

#include <chrono>
#include <set>
#include <string>

#include "compliance/check.h"
#include "compliance/process.h"

namespace compliance {

class Judge {
 public:
  /// Of the library in the file `path`; a check may take `limit`. Throws std::system_error.
  Judge(const std::string& path, std::chrono::seconds limit);
  ~Judge();
  Judge(const Judge&) = delete;
  Judge& operator=(const Judge&) = delete;

  /// Runs the checks whose needs are met, and says of the others what they lack. Throws std::system_error when nothing
  /// can be said.
  void run(Checks checks);

  /// Says that the checks were not run, and why.
  void leaveOut(Checks checks, const std::string& reason);

  /// Judges what the library has done to its process meanwhile, and writes the line that counts. Returns whether no
  /// check has failed.
  bool finish();

 private:
  std::string lackOf(const Check& check) const;
  void runOne(const Check& check);
  std::string failureOf(std::optional<int> status);
  void say(const char* verdict, const std::string& line);
  void saySeen(const char* name, const std::string& failure);

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
