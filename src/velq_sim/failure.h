// How velq-sim ends when it does not become the command.
#pragma once

#include <stdexcept>
#include <string>

namespace velq_sim {

enum ExitStatus {
  Failed = 1,
  WrongUsage = 2,
  CannotRun = 126,  ///< the command exists but cannot be run
  NotFound = 127,   ///< the command does not exist
};

/// Ends the process with `status`. what() is one line for the user, without the program's name.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& what) : std::runtime_error(what), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace velq_sim
