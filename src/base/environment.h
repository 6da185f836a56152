#pragma once

#include <cstdlib>
#include <string>

namespace base {

/// The environment variable `name`; empty when it is not set, and in a set-user-id process.
inline std::string environment(const char* name) {
  const char* const value = secure_getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace base
