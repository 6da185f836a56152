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

/// Reads the arguments of main(). Options end at the first argument that is not an option, or after "--". Prints the
/// help or the version if an option requests it, and returns nothing then. Throws Failure for an option that is
/// unknown, given twice, or lacks a value, for options that exclude each other, and for a request without work.
std::optional<Request> parse(int argc, char** argv);

}  // namespace velq_sim
