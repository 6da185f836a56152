#pragma once

#include <stdexcept>
#include <string>

#include "simulator/text.h"

namespace simulator {

/// A rig that cannot be used. what() is "PLACE: what is wrong there", without the file's name, on one line whatever the
/// rig holds.
struct RigError : std::runtime_error {
  explicit RigError(const std::string& problem) : std::runtime_error(printable(problem)) {}
};

}  // namespace simulator
