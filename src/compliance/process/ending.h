// How a process ended, and what that says of the library.
#pragma once

#include <optional>
#include <string>

#include "compliance/process/guardian.h"
#include "compliance/process/report.h"

namespace compliance {

/// How a process that did some work ended.
struct Ending {
  std::optional<EndNote> note;  ///< nothing when it was ended, or its guardian was
  std::string problem;          ///< why it was ended, or how it attacked the checker; empty for neither
  std::string result;           ///< what it wrote to ResultDescriptor
  bool isFlushed = false;       ///< its streams were flushed at its end, as those of every program should be
  bool isHung = false;          ///< it was ended because a call did not return
  bool hasOutput = false;       ///< it wrote to standard output
  int interruption = 0;         ///< the signal of a user who wants to end the checks; 0 for none
};

/// Why the check that ended so has failed; empty when it has passed.
std::string findingOf(const Ending& ending, const Report& report);

/// What the library has done to the process that is not its business; empty when nothing.
std::string disturbanceIn(const Ending& ending, const Report& report);

/// "SIGTERM", or "signal 34" for one without a name.
std::string nameOf(int signal);

/// The first of `count` things, and how many more there are.
std::string counted(const std::string& first, unsigned count);

}  // namespace compliance
