// Runs qutil as a process, on a rig, a state and a library of its own, and gathers all that it did.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

/// One invocation. What is empty is left out.
struct Command {
  std::vector<std::string> arguments;
  std::string faults = {};     ///< VELQ_FAULTS
  std::string input = {};      ///< standard input, a file; or
  std::string keys = {};       ///< entered once a terminal waits for a key, with no line end, and
  std::string answers = {};    ///< entered there at the first question
  std::string locale = "C";    ///< LC_ALL
  std::string library = {};    ///< a directory whose libvelq.so is used in place of the simulator
  bool probed = true;          ///< whether the probe and the sleep recorder are loaded before the library
  bool expectsErrors = false;  ///< whether anything may be written to standard error
};

struct Outcome {
  std::string output;
  std::string errors;
  int status = -1;                 ///< exit status; -1 when a signal ended the run
  int signal = 0;                  ///< that signal
  std::vector<std::string> trace;  ///< the probe's lines, and "sleep(N)" for every sleep

  /// The trace's lines that begin with one of `operations`, a line each.
  std::string calls(const std::vector<std::string>& operations = {""}) const;

  /// The last call that is no disposal.
  std::string lastCall() const;

  /// The handles that were created and never disposed of, in order, separated by spaces, but for the control that every
  /// command creates.
  std::string unreleased() const;
};

/// An invocation, written as in a shell: faults, then arguments, separated by spaces; and all that it must do. Its
/// input answers two questions with yes.
struct Case {
  std::string line;
  std::string output;
  std::string last = {};        ///< how the last call that is no disposal begins
  std::string unreleased = {};  ///< as Outcome has it
  int status = 0;
};

/// A directory for each test, with rig.json and state in it.
class ToolTest : public testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  /// Writes the rig; without one the built-in rig is used.
  void useRig(const std::string& json);
  void write(const std::string& name, const std::string& content) const;
  std::string path(const std::string& name) const { return directory_ + "/" + name; }

  /// Runs to the end. Fails the test when standard error is not as `expectsErrors` says.
  Outcome runWith(const Command& command) const;
  Outcome run(const std::vector<std::string>& arguments) const { return runWith({.arguments = arguments}); }
  Outcome runLine(const std::string& line) const;

  /// Runs each case on a new state, where all faults must be reached.
  void check(const std::vector<Case>& cases) const;

  /// While `holder` is running, with real sleeps, runs `meanwhile` until its trace contains `found` (no longer than
  /// five seconds), and then `after`. The holder is killed. Returns the outcomes of the other two.
  std::pair<Outcome, Outcome> runBeside(const std::vector<std::string>& holder, const std::string& meanwhile,
                                        const std::string& found, const std::string& after) const;

  /// Creates a firmware file with dfu-suffix and returns its path.
  std::string firmware(const std::string& name, const std::string& product, const std::string& version) const;

  std::map<std::string, std::string> environment;  ///< more variables, for all runs
  std::string state;                               ///< VELQ_STATE, in the test's directory unless changed

 private:
  std::string shellLine(const Command& command) const;

  std::string directory_;
};

/// What a command of the shell prints, standard error included.
std::string outputOf(const std::string& command);

/// What printf() prints of a message in the locale "C": C libraries differ for a character that it cannot write.
template <typename... Values>
std::string printed(const char* format, Values... values) {
  char* text = nullptr;
  size_t size = 0;
  FILE* const stream = open_memstream(&text, &size);
  fprintf(stream, format, values...);
  fclose(stream);
  const std::string result(text, size);
  free(text);
  return result;
}

/// A rig with one plain device, number 0, described "Board".
inline constexpr char OneBoard[] = R"({"devices": [{"number": 0, "description": "Board", "product_id": "0x10"}]})";

inline constexpr char Insufficient[] = "Insufficient parameter! Please use \"qutil /?\"to get help. (Errorlevel = 1)\n";
