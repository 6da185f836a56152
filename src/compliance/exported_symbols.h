// The dynamic symbol table of a library file.
#pragma once

#include <string>
#include <vector>

namespace compliance {

/// The names that the file defines for others, in its order. Throws std::runtime_error when the file is no readable
/// shared library of this machine's kind.
std::vector<std::string> exportedSymbols(const std::string& path);

}  // namespace compliance
