// velq-compliance: checks that a device library does what tools rely on.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <system_error>

#include "compliance/checks/check.h"
#include "compliance/library/exported_symbols.h"
#include "compliance/options.h"
#include "compliance/runner/check_runner.h"
#include "text/one_line.h"

using namespace compliance;

namespace {

constexpr const char* Help = R"(Usage: velq-compliance [--write] [--timeout SECONDS] LIBRARY
Checks that the device library in the file LIBRARY does what
<velq/operations.def> demands, on every device that it lists. The output is in
the Test Anything Protocol.

  --write    also change descriptions, board ids and fusion devices, and restore
             them; only if every check before has passed
  --timeout SECONDS
             the time limit of a call, 10 by default
  --help     show this help
  --version  show the version

A preloaded probe (LD_PRELOAD) is checked with the library. Exit status: 0 no
check failed, 1 a check failed, 2 wrong usage, no shared library, or output that
cannot be written.

More is in the manual: man velq-compliance
)";

int print(const char* text) {
  if (std::fputs(text, stdout) < 0 || std::fflush(stdout) != 0)
    throw std::system_error(errno, std::generic_category(), "standard output");
  return 0;
}

[[noreturn]] void endBy(int signal) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, signal);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  sigprocmask(SIG_UNBLOCK, &signals, nullptr);
  std::abort();
}

// The numbers of the standard streams are taken, for what is opened must not become one of them.
void occupyStandardNumbers() {
  int number = 0;
  do number = open("/dev/null", O_RDONLY | O_CLOEXEC);
  while (number >= 0 && number <= STDERR_FILENO);
  close(number);
}

// Returns the exit status; ends as the user wants when the user ends the checks.
int runChecks(const Options& options) {
  expectSharedLibrary(options.library);
  CheckRunner runner(options.library, options.limit);
  for (const Check& check : AllChecks) {
    if (check.access == CheckAccess::Reads || options.writes)
      runner.run(check);
    else
      runner.skip(check, "needs --write");
    if (runner.interruption() != 0) endBy(runner.interruption());
  }
  return runner.finish() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    occupyStandardNumbers();
    const Options options = parseOptions(argc, argv);
    if (options.showsHelp) return print(Help);
    if (options.showsVersion) return print("velq-compliance " VERSION "\n");
    return runChecks(options);
  } catch (const std::exception& error) {
    fprintf(stderr, "velq-compliance: %s\n", text::oneLine(error.what()).c_str());
    return UsageStatus;
  }
}
