// velq-compliance: checks that a device library keeps the promises that tools rely on.
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include "compliance/check.h"
#include "compliance/library.h"
#include "compliance/runner.h"
#include "compliance/snapshot.h"

using namespace compliance;

namespace {

constexpr int UsageStatus = 2;  // also for a library that cannot be loaded

constexpr const char* Help = R"(Usage: velq-compliance [--write] LIBRARY
Checks that the device library in the file LIBRARY keeps the promises of
<velq/operations.def>, on every device that it lists: "ok" or "FAIL" and what
was found where, a line a check, then a line that counts them.

  --write    also change descriptions, board ids and fusion groups, and put them
             back; only when every other check has passed
  --help     show this text
  --version  show the version

A probe that is preloaded (LD_PRELOAD) lies over the library and is checked with
it. Exit status: 0 no check failed, 1 a check failed, 2 wrong usage or no
library that can be loaded.
)";

struct Options {
  bool writes = false;
  std::string library;
};

// Throws std::invalid_argument with what is wrong.
Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--write")
      options.writes = true;
    else if (argument.starts_with("-"))
      throw std::invalid_argument("unknown option \"" + argument + "\"; see velq-compliance --help");
    else if (!options.library.empty())
      throw std::invalid_argument("\"" + argument + "\": one LIBRARY only, \"" + options.library +
                                  "\" is given before");
    else
      options.library = argument;
  }
  if (options.library.empty()) throw std::invalid_argument("no LIBRARY given; see velq-compliance --help");
  return options;
}

constexpr const Checks* Reading[] = {&DeviceChecks,  &TextChecks,     &ArrayChecks,   &FusionChecks,
                                     &ControlChecks, &ScenarioChecks, &SnapshotChecks};
constexpr const Checks* Writing[] = {&WriteChecks, &FusionWriteChecks};

// Returns the exit status.
int runChecks(const Library& library, bool writes) {
  Runner runner;
  Bench bench{library, {}};
  runner.run(SymbolChecks, bench);
  // Nothing can be called through tables with holes in them.
  const bool callable = runner.run(TableChecks, bench);
  if (callable) {
    Runner::begin("first-reading");
    bench.before = takeSnapshot();
  }
  for (const Checks* const checks : Reading) runner.runIf(callable, *checks, bench);
  // A device is changed only through a library that reads it right.
  const bool changing = writes && !runner.hasFailures();
  for (const Checks* const checks : Writing) runner.runIf(changing, *checks, bench);
  runner.summarize();
  return runner.hasFailures() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) return printf("%s", Help) < 0;
  if (argc == 2 && std::strcmp(argv[1], "--version") == 0) return puts("velq-compliance " VERSION) < 0;
  try {
    const Options options = parse(argc, argv);
    const Library library(options.library);
    if (library.answeringPath() != library.path()) printf("through %s\n", library.answeringPath().c_str());
    return runChecks(library, options.writes);
  } catch (const std::exception& error) {
    fprintf(stderr, "velq-compliance: %s\n", error.what());
    return UsageStatus;
  }
}
