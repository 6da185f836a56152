#include "simulator/status.h"

#include <cstdio>
#include <set>

namespace simulator {

void report(const std::string& message) {
  static std::set<std::string> said;
  if (said.insert(message).second) fprintf(stderr, "velq-sim: %s\n", message.c_str());
}

}  // namespace simulator
