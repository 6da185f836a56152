// velq-compliance: checks that a device library does what tools rely on.
#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <system_error>

#include "compliance/library/exported_symbols.h"
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

constexpr int MostSeconds = 3600;

struct Options {
  std::string library;
  bool writes = false;
  std::chrono::seconds limit{10};  // of one call
  const char* shown = nullptr;     // in place of all else
};

constexpr option Choices[] = {{"write", no_argument, nullptr, 'w'},
                              {"timeout", required_argument, nullptr, 't'},
                              {"help", no_argument, nullptr, 'h'},
                              {"version", no_argument, nullptr, 'v'},
                              {}};

[[noreturn]] void refuse(const std::string& why) { throw std::invalid_argument(why + "; see velq-compliance --help"); }

std::chrono::seconds secondsFrom(const std::string& given) {
  int seconds = 0;
  const auto [end, error] = std::from_chars(given.data(), given.data() + given.size(), seconds);
  if (error != std::errc() || end != given.data() + given.size() || seconds < 1 || seconds > MostSeconds)
    refuse("--timeout: \"" + given + "\" is no number of seconds from 1 to " + std::to_string(MostSeconds));
  return std::chrono::seconds(seconds);
}

Options parseOptions(int argc, char** argv) {
  Options options;
  opterr = 0;
  for (int choice = 0; (choice = getopt_long(argc, argv, ":", Choices, nullptr)) != -1;) {
    if (choice == ':') refuse("--timeout needs a value");
    if (choice == '?') refuse("unknown option \"" + std::string(argv[optind - 1]) + "\"");
    options.writes |= choice == 'w';
    if (choice == 't') options.limit = secondsFrom(optarg);
    if (choice == 'h') options.shown = Help;
    if (choice == 'v') options.shown = "velq-compliance " VERSION "\n";
  }
  if (options.shown != nullptr) return options;
  if (optind == argc) refuse("no LIBRARY given");
  options.library = argv[optind];
  if (optind + 1 < argc)
    refuse("\"" + std::string(argv[optind + 1]) + "\": one LIBRARY only, \"" + options.library + "\" is given before");
  return options;
}

// The numbers of the standard streams are taken, for what is opened must not become one of them.
void occupyStandardNumbers() {
  int number = 0;
  while (number >= 0 && number <= STDERR_FILENO) number = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(number);
}

// Returns the exit status; ends as the user wants when the user ends the checks.
int check(const Options& options) {
  expectSharedLibrary(options.library);
  const int status = runChecks(options.library, options.limit, options.writes);
  if (status > 128) {
    std::signal(status - 128, SIG_DFL);
    // Returns where the caller has blocked the signal.
    std::raise(status - 128);
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    occupyStandardNumbers();
    const Options options = parseOptions(argc, argv);
    if (options.shown == nullptr) return check(options);
    if (std::fputs(options.shown, stdout) < 0 || std::fflush(stdout) != 0)
      throw std::system_error(errno, std::generic_category(), "standard output");
    return 0;
  } catch (const std::exception& error) {
    fprintf(stderr, "velq-compliance: %s\n", text::oneLine(error.what()).c_str());
    // For wrong usage, and for all other reasons why no check can be run.
    return 2;
  }
}
