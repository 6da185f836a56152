// How a run ends when the command does not take its place.
#pragma once

#include <stdexcept>
#include <string>

namespace velq_sim {

enum ExitStatus {
  Failed = 1,       ///< a rig that is not good, a state that cannot be reset, a missing library
  WrongUsage = 2,   ///< arguments that say nothing to do
  CannotRun = 126,  ///< the command is there but cannot be run
  NotFound = 127,   ///< the command is not there
};

/// Ends the run with `status`. what() is one line for the user, without the program's name.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& what) : std::runtime_error(what), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace velq_sim
