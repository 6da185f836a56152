// The command line.
#pragma once

#include <optional>
#include <string>

namespace velq_sim {

/// What the command line asks for. A string is empty when its option is not given.
struct Request {
  std::string rig;
  std::string state;
  std::string trace;
  std::string faults;
  std::string check;
  std::string capture;
  bool changes = false;
  bool reset = false;
  char** command = nullptr;  ///< its name and arguments, ended by a null; only that null when there is no command
};

/// Reads the arguments of main(). Options end at the first argument that is none, or behind "--". Shows help or the
/// version where that is asked for; there is nothing else to do then. Throws Failure for an option that is unknown,
/// given twice, or lacks a value, for options that do not go together, and when nothing is left to do.
std::optional<Request> parse(int argc, char** argv);

}  // namespace velq_sim
