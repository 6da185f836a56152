#pragma once

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace base {

/// A mangled C++ name as C++ writes it; any other string as it is.
inline std::string demangled(const char* name) {
  const std::unique_ptr<char, decltype(&std::free)> cxx(abi::__cxa_demangle(name, nullptr, nullptr, nullptr),
                                                        std::free);
  return cxx == nullptr ? name : cxx.get();
}

}  // namespace base
