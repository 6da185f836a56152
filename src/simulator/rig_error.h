#pragma once

#include <stdexcept>

namespace simulator {

/// A rig that cannot be used. what() is "PLACE: what is wrong there", without the file's name; what the rig holds
/// stands in it as it is.
struct RigError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace simulator
