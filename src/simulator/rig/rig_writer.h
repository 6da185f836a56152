// Writing rigs.
#pragma once

#include <string>

#include "simulator/rig/rig.h"

namespace simulator {

/// The file of a rig, for people to read and edit: keys in the order of docs/simulator.md, values that are the default
/// left out, a line end behind it. Without passwords, progress values and codes, which no library reports of installed
/// devices. Its strings have to be UTF-8. Reading it returns the same rig but for those.
std::string textOf(const Rig& rig);

}  // namespace simulator
