// A library's file, as it lies there.
#pragma once

#include <string>
#include <vector>

namespace compliance {

/// Throws std::runtime_error when the file is no readable shared library.
void expectSharedLibrary(const std::string& path);

/// The names that the file defines for others, in its order. Throws std::runtime_error when it has none that can be
/// read.
std::vector<std::string> exportedSymbols(const std::string& path);

}  // namespace compliance
