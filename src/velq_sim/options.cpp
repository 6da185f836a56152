#include "velq_sim/options.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string_view>

#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

class Formatter : public CLI::Formatter {
 public:
  Formatter() { column_width(16); }

  std::string make_usage(const CLI::App*, std::string) const override {
    return "Usage: velq-sim [OPTION...] COMMAND [ARGUMENT...]\n"
           "       velq-sim [OPTION...] --reset\n"
           "       velq-sim --check FILE\n";
  }
};

[[noreturn]] void refuse(const std::string& problem) { throw Failure(WrongUsage, problem + "; see velq-sim --help"); }

std::string refuseEmpty(const std::string& value) { return value.empty() ? "a value is needed" : ""; }

void define(CLI::App& app, Request& request) {
  const auto add = [&](const char* name, const char* value, std::string& text, const char* help) {
    app.add_option(name, text, help)->type_name(value)->check(refuseEmpty);
  };
  add("--rig", "FILE", request.rig, "take the devices from this rig (VELQ_RIG)");
  add("--state", "FILE", request.state, "keep what commands change in this file (VELQ_STATE)");
  app.add_flag("--reset", request.reset, "forget what commands have changed; needs no COMMAND")
      ->disable_flag_override()
      ->multi_option_policy(CLI::MultiOptionPolicy::Throw);
  add("--trace", "FILE", request.trace, "append a line for every library call to this file (VELQ_TRACE)");
  add("--faults", "TEXT", request.faults, "let library calls fail as TEXT says (VELQ_FAULTS)");
  add("--check", "FILE", request.check, "only read this rig and say whether it is good");
  app.set_help_flag("--help", "show this help");
  app.set_version_flag("--version", "velq-sim " VERSION, "show the version");
}

// Finds the command behind the options, of which CLI11 leaves a "--" standing where no option comes before it.
char** commandIn(const CLI::App& app, char** begin, char** end) {
  char** command = end - app.remaining().size();
  for (char** option = begin; option != command; ++option) {
    // CLI11 would take what follows as the value.
    if (std::string_view(*option).ends_with("=")) refuse(std::string(*option) + " needs a value");
  }
  if (command == end || **command != '-' || std::string_view(*(command - 1)) == "--") return command;
  if (std::string_view(*command) != "--") refuse("unknown option \"" + std::string(*command) + "\"");
  return command + 1;
}

}  // namespace

std::optional<Request> parse(int argc, char** argv) {
  Request request;
  CLI::App app("Runs a command on the simulator of Quellis boards.", "velq-sim");
  app.formatter(std::make_shared<Formatter>());
  app.footer("More is in the manual: man velq-sim");
  app.prefix_command();
  define(app, request);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& asked) {
    app.exit(asked);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    refuse(error.what());
  }
  request.command = commandIn(app, argv + 1, argv + argc);
  const bool hasCommand = *request.command != nullptr;
  if (!request.check.empty()) {
    const bool hasMore = request.reset || !(request.rig + request.state + request.trace + request.faults).empty();
    if (hasCommand || hasMore) refuse("--check goes with no command and no other option");
  } else if (!hasCommand && !request.reset) {
    refuse("no command is given");
  }
  return request;
}

}  // namespace velq_sim
