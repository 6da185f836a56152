// The command line.
#pragma once

#include <chrono>
#include <string>

namespace compliance {

/// The status for wrong usage, and for what else keeps the checks from being run.
inline constexpr int UsageStatus = 2;

struct Options {
  std::string library;
  bool writes = false;
  std::chrono::seconds limit{10};  ///< for one check
};

/// Reads the arguments, which end with a null. Throws std::invalid_argument with what is wrong.
Options parseOptions(char** argv);

}  // namespace compliance
