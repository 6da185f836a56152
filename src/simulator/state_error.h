#pragma once

#include <stdexcept>
#include <string>

#include "simulator/text.h"

namespace simulator {

/// A state that cannot be used. what() says why, without the file's name, on one line whatever the state holds.
struct StateError : std::runtime_error {
  explicit StateError(const std::string& problem) : std::runtime_error(printable(problem)) {}
};

}  // namespace simulator
