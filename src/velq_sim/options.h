// The options: one table that the command line is read by and the help is made of.
#pragma once

#include <string>

namespace velq_sim {

/// What the command line asks for. A text is empty when its option is not given.
struct Request {
  std::string rig;
  std::string state;
  std::string trace;
  std::string faults;
  std::string check;
  bool reset = false;
  bool help = false;
  bool version = false;
  char** command = nullptr;  ///< its name and arguments, ended by a null; only that null when there is no command
};

/// Reads `arguments`, which begin behind the program's name and end with a null. Options end at the first argument that
/// does not begin with "-", or behind "--". Throws Failure for an option that is unknown, given twice, or lacks a
/// value, and when nothing is left to do.
Request parse(char** arguments);

/// What "--help" shows.
std::string helpText();

}  // namespace velq_sim
