#include "simulator/state/environment.h"

#include <cstdlib>

namespace simulator {

namespace {

std::string variable(const char* name) {
  const char* const value = secure_getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

std::string rigPathFromEnvironment() { return variable("VELQ_RIG"); }

StatePlace statePlaceFromEnvironment() {
  const std::string named = variable("VELQ_STATE");
  if (!named.empty()) return {named, false};
  const std::string rig = rigPathFromEnvironment();
  if (!rig.empty()) return {rig + ".state", false};
  const std::string home = variable("HOME");
  std::string folder = variable("XDG_STATE_HOME");
  if (folder.empty() && !home.empty()) folder = home + "/.local/state";
  return {folder.empty() ? "" : folder + "/velq-sim/state", true};
}

}  // namespace simulator
