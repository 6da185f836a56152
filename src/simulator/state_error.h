#pragma once

#include <stdexcept>

namespace simulator {

/// A state that cannot be used. what() says why, without the file's name; what the state holds stands in it as it is.
struct StateError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace simulator
