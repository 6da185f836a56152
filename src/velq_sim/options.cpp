#include "velq_sim/options.h"

#include <getopt.h>

#include <cstdio>
#include <iterator>
#include <string_view>

#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

constexpr const char* Help = R"(Usage: velq-sim [OPTION...] COMMAND [ARGUMENT...]
       velq-sim [OPTION...] --reset
       velq-sim [OPTION...] --changes
       velq-sim --capture FILE
       velq-sim --check FILE
Run a command on simulated Quellis boards.

  --rig FILE      use the devices of this rig (VELQ_RIG)
  --state FILE    save changes in this file (VELQ_STATE)
  --reset         delete the state, and with it all changes
  --changes       print what commands have changed
  --trace FILE    append a line for each library call to this file (VELQ_TRACE)
  --faults LIST   make library calls return the answers in LIST (VELQ_FAULTS)
  --capture FILE  write the installed devices as a rig; "-" is standard output
  --check FILE    report whether a rig is valid
  --help          print this help
  --version       print the version

For details, see velq-sim(1).
)";

// In the order of this list.
enum Choice { Rig, State, Trace, Faults, Check, Capture, Changes, Reset, ShowHelp, ShowVersion, ChoiceCount };
constexpr option Options[] = {{"rig", required_argument, nullptr, Rig},
                              {"state", required_argument, nullptr, State},
                              {"trace", required_argument, nullptr, Trace},
                              {"faults", required_argument, nullptr, Faults},
                              {"check", required_argument, nullptr, Check},
                              {"capture", required_argument, nullptr, Capture},
                              {"changes", no_argument, nullptr, Changes},
                              {"reset", no_argument, nullptr, Reset},
                              {"help", no_argument, nullptr, ShowHelp},
                              {"version", no_argument, nullptr, ShowVersion},
                              {}};
static_assert(std::size(Options) == ChoiceCount + 1);

[[noreturn]] void refuse(const std::string& problem) { throw Failure(WrongUsage, problem + "; see velq-sim --help"); }

std::optional<Request> show(const char* text) {
  std::fputs(text, stdout);
  return std::nullopt;
}

void take(Request& request, Choice choice) {
  // In the order of Choice, in which those with a value come first.
  std::string* const values[] = {&request.rig,    &request.state, &request.trace,
                                 &request.faults, &request.check, &request.capture};
  const std::string name = std::string("--") + Options[choice].name;
  if (choice >= Changes) {
    bool& flag = choice == Changes ? request.changes : request.reset;
    if (flag) refuse(name + " is given twice");
    flag = true;
    return;
  }
  if (*optarg == 0) refuse(name + " needs a value");
  if (!values[choice]->empty()) refuse(name + " is given twice");
  *values[choice] = optarg;
}

void checkCombination(const Request& request) {
  const bool hasCommand = *request.command != nullptr;
  const bool hasProbe = !(request.trace + request.faults).empty();
  const bool hasMore =
      hasCommand || hasProbe || request.changes || request.reset || !(request.rig + request.state).empty();
  if (!request.check.empty() && (hasMore || !request.capture.empty()))
    refuse("--check cannot be used with a command or another option");
  if (!request.capture.empty() && hasMore) refuse("--capture cannot be used with a command or another option");
  if (request.changes && (hasCommand || hasProbe || request.reset))
    refuse("--changes can only be used with --rig and --state");
  const bool hasWork = hasCommand || request.changes || request.reset || !(request.check + request.capture).empty();
  if (!hasWork) refuse("no command is given");
}

// Says what is wrong with the argument `given`, for which getopt_long() returned `code`.
[[noreturn]] void refuseOption(int code, const std::string& given) {
  if (code == ':') refuse(given + " needs a value");
  // Set to the option's own value only where it was given a value that it does not take.
  if (optopt > 0 && optopt < ChoiceCount) refuse("--" + std::string(Options[optopt].name) + " takes no value");
  refuse("unknown option \"" + given + "\"");
}

}  // namespace

std::optional<Request> parse(int argc, char** argv) {
  Request request;
  // The messages of getopt_long() contain the control characters of an argument as they are.
  opterr = 0;
  for (;;) {
    // No argument is permuted and the first error is final, so a rejected argument is at this place.
    const int place = optind;
    // "+": options end where the command begins. ":": returned for a missing value, unlike for an unknown option.
    const int code = getopt_long(argc, argv, "+:", Options, nullptr);
    if (code == -1) break;
    if (code == ':' || code == '?') refuseOption(code, argv[place]);
    if (code == ShowHelp) return show(Help);
    if (code == ShowVersion) return show("velq-sim " VERSION "\n");
    take(request, static_cast<Choice>(code));
  }
  request.command = argv + optind;
  checkCombination(request);
  return request;
}

}  // namespace velq_sim
