// The command line.
#pragma once

#include <chrono>
#include <string>

namespace compliance {

/// The exit status for wrong usage, and for all other reasons why no check can be run.
inline constexpr int UsageStatus = 2;

struct Options {
  std::string library;
  bool writes = false;
  bool showsHelp = false;
  bool showsVersion = false;
  std::chrono::seconds limit{10};  ///< of one call
};

/// Reads the arguments of main(). Throws std::invalid_argument with what is wrong.
Options parseOptions(int argc, char** argv);

}  // namespace compliance
