#include "compliance/options.h"

#include <charconv>
#include <stdexcept>

namespace compliance {

namespace {

constexpr int MostSeconds = 3600;

[[noreturn]] void refuse(const std::string& why) { throw std::invalid_argument(why + "; see velq-compliance --help"); }

std::chrono::seconds secondsFrom(const std::string& given) {
  int seconds = 0;
  const auto [end, error] = std::from_chars(given.data(), given.data() + given.size(), seconds);
  if (error != std::errc() || end != given.data() + given.size() || seconds < 1 || seconds > MostSeconds)
    refuse("--timeout: \"" + given + "\" is no number of seconds from 1 to " + std::to_string(MostSeconds));
  return std::chrono::seconds(seconds);
}

}  // namespace

Options parseOptions(char** argv) {
  Options options;
  // Behind the last argument stands a null.
  for (char** next = argv + 1; *next != nullptr;) {
    const std::string argument = *next++;
    if (argument == "--write")
      options.writes = true;
    else if (argument == "--timeout")
      options.limit = secondsFrom(*next == nullptr ? "" : *next++);
    else if (argument.starts_with("-"))
      refuse("unknown option \"" + argument + "\"");
    else if (!options.library.empty())
      refuse("\"" + argument + "\": one LIBRARY only, \"" + options.library + "\" is given before");
    else
      options.library = argument;
  }
  if (options.library.empty()) refuse("no LIBRARY given");
  return options;
}

}  // namespace compliance
