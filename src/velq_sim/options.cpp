#include "velq_sim/options.h"

#include <string>
#include <string_view>

#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

struct Option {
  std::string_view name;
  const char* value;           ///< what the help calls the value
  std::string Request::*text;  ///< where the value goes; null for an option that takes none
  bool Request::*flag;         ///< set by an option without a value
  const char* help;
};

constexpr Option Options[] = {
    {"--rig", "FILE", &Request::rig, nullptr, "take the devices from this rig (VELQ_RIG)"},
    {"--state", "FILE", &Request::state, nullptr, "keep what commands change in this file (VELQ_STATE)"},
    {"--reset", "", nullptr, &Request::reset, "forget what commands have changed; needs no COMMAND"},
    {"--trace", "FILE", &Request::trace, nullptr, "append a line for every library call to this file (VELQ_TRACE)"},
    {"--faults", "TEXT", &Request::faults, nullptr, "let library calls fail as TEXT says (VELQ_FAULTS)"},
    {"--check", "FILE", &Request::check, nullptr, "only read this rig and say whether it is good"},
    {"--help", "", nullptr, &Request::help, "show this help"},
    {"--version", "", nullptr, &Request::version, "show the version"},
};

[[noreturn]] void refuse(const std::string& problem) { throw Failure(WrongUsage, problem + "; see velq-sim --help"); }

const Option& find(std::string_view name) {
  for (const Option& option : Options) {
    if (option.name == name) return option;
  }
  refuse("unknown option \"" + std::string(name) + "\"");
}

// Takes the option that `argument` begins with, and moves on to the next argument that was not used up.
void take(char**& argument, Request& request) {
  const std::string_view given = *argument++;
  const size_t equals = given.find('=');
  const Option& option = find(given.substr(0, equals));
  const std::string name(option.name);
  if (option.text == nullptr) {
    if (equals != std::string_view::npos) refuse(name + " takes no value");
    if (request.*option.flag) refuse(name + " is given twice");
    request.*option.flag = true;
    return;
  }
  std::string& text = request.*option.text;
  if (!text.empty()) refuse(name + " is given twice");
  if (equals != std::string_view::npos)
    text = given.substr(equals + 1);
  else if (*argument != nullptr)
    text = *argument++;
  if (text.empty()) refuse(name + " needs a value");
}

}  // namespace

Request parse(char** arguments) {
  Request request;
  char** argument = arguments;
  while (*argument != nullptr && **argument == '-') {
    if (std::string_view(*argument) == "--") {
      ++argument;
      break;
    }
    take(argument, request);
  }
  request.command = argument;
  const bool hasCommand = *argument != nullptr;
  if (request.help || request.version) return request;
  if (!request.check.empty()) {
    const bool hasMore = request.reset || !(request.rig + request.state + request.trace + request.faults).empty();
    if (hasCommand || hasMore) refuse("--check goes with no command and no other option");
  } else if (!hasCommand && !request.reset) {
    refuse("no command is given");
  }
  return request;
}

std::string helpText() {
  std::string text =
      "Runs a command on the simulator of Quellis boards.\n"
      "Usage: velq-sim [OPTION...] COMMAND [ARGUMENT...]\n"
      "       velq-sim [OPTION...] --reset\n"
      "       velq-sim --check FILE\n\n";
  for (const Option& option : Options) {
    const std::string form = std::string(option.name) + " " + option.value;
    text += "  " + form + std::string(16 - form.size(), ' ') + option.help + "\n";
  }
  return text + "\nMore is in the manual: man velq-sim\n";
}

}  // namespace velq_sim
