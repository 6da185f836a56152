#include "compliance/options.h"

#include <getopt.h>

#include <charconv>
#include <stdexcept>

namespace compliance {

namespace {

constexpr int MostSeconds = 3600;

// In the order of this list.
enum Choice { Write, Timeout, ShowHelp, ShowVersion };
constexpr option Choices[] = {{"write", no_argument, nullptr, Write},
                              {"timeout", required_argument, nullptr, Timeout},
                              {"help", no_argument, nullptr, ShowHelp},
                              {"version", no_argument, nullptr, ShowVersion},
                              {}};

[[noreturn]] void refuse(const std::string& why) { throw std::invalid_argument(why + "; see velq-compliance --help"); }

std::chrono::seconds secondsFrom(const std::string& given) {
  int seconds = 0;
  const auto [end, error] = std::from_chars(given.data(), given.data() + given.size(), seconds);
  if (error != std::errc() || end != given.data() + given.size() || seconds < 1 || seconds > MostSeconds)
    refuse("--timeout: \"" + given + "\" is no number of seconds from 1 to " + std::to_string(MostSeconds));
  return std::chrono::seconds(seconds);
}

}  // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  opterr = 0;
  for (int choice = 0; (choice = getopt_long(argc, argv, ":", Choices, nullptr)) != -1;) {
    if (choice == ':') refuse("--timeout needs a value");
    if (choice == '?') refuse("unknown option \"" + std::string(argv[optind - 1]) + "\"");
    options.writes |= choice == Write;
    options.showsHelp |= choice == ShowHelp;
    options.showsVersion |= choice == ShowVersion;
    if (choice == Timeout) options.limit = secondsFrom(optarg);
  }
  if (options.showsHelp || options.showsVersion) return options;
  if (optind == argc) refuse("no LIBRARY given");
  options.library = argv[optind];
  if (optind + 1 < argc)
    refuse("\"" + std::string(argv[optind + 1]) + "\": one LIBRARY only, \"" + options.library + "\" is given before");
  return options;
}

}  // namespace compliance
