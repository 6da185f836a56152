#pragma once

#include <stdexcept>

namespace simulator {

/// A rig that cannot be used. what() is "PLACE: what is wrong there", without the file's name.
class RigError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace simulator
