#include "simulator/model/status.h"

#include <cstdio>
#include <set>

#include "text/one_line.h"

namespace simulator {

void report(const std::string& message) {
  // Once: a tool calls the same operation for every device.
  static std::set<std::string> said;
  if (said.insert(message).second) fprintf(stderr, "velq-sim: %s\n", text::oneLine(message).c_str());
}

}  // namespace simulator
