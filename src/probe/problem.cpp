#include "probe/problem.h"

#include <cstdio>
#include <cstdlib>

#include "text/one_line.h"

namespace probe {

void complain(std::string_view problem) { fprintf(stderr, "velq-probe: %s\n", text::oneLine(problem).c_str()); }

void stop(std::string_view problem) {
  complain(problem);
  std::abort();
}

}  // namespace probe
