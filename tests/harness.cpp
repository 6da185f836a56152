#include "harness.h"

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? "'\\''" : std::string(1, c);
  return result + "' ";
}

// Runs the line on a terminal, until its last process ends or prints nothing for a minute. Echo stays on, so the output
// contains what the terminal echoes in line mode, but no key that is read raw.
int converse(const std::string& line, std::string keys, std::string answers, std::string& output) {
  int terminal = -1;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process == 0) execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
  const auto type = [&](std::string& text) {
    text.erase(0, static_cast<size_t>(write(terminal, text.data(), text.size())));
  };
  pollfd file{terminal, POLLIN, 0};
  for (int waits = 0; waits < 6000; ++waits) {
    termios settings{};
    if (!keys.empty() && tcgetattr(terminal, &settings) == 0 && (settings.c_lflag & ICANON) == 0) type(keys);
    if (!answers.empty() && output.ends_with("(Y/N):\r\n")) type(answers);
    if (poll(&file, 1, 10) <= 0) continue;
    char bytes[4096];
    const ssize_t count = read(terminal, bytes, sizeof bytes);
    if (count <= 0) break;
    output.append(bytes, static_cast<size_t>(count));
    waits = 0;
  }
  close(terminal);
  // The terminal makes two characters of a line end.
  std::erase(output, '\r');
  int status = -1;
  waitpid(process, &status, 0);
  return status;
}

}  // namespace

std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) output += static_cast<char>(c);
  pclose(pipe);
  return output;
}

std::string Outcome::calls(const std::vector<std::string>& operations) const {
  std::string lines;
  for (const std::string& line : trace) {
    const auto begins = [&](const std::string& operation) { return line.starts_with(operation); };
    if (std::any_of(operations.begin(), operations.end(), begins)) lines += line + "\n";
  }
  return lines;
}

std::string Outcome::lastCall() const {
  const auto counts = [](const std::string& line) { return line[0] != '#' && line.find("_dispose(") == line.npos; };
  const auto last = std::find_if(trace.rbegin(), trace.rend(), counts);
  return last == trace.rend() ? "" : *last;
}

std::string Outcome::unreleased() const {
  std::string handles;
  for (const std::string& line : trace) {
    const size_t made = line.find("_Create("), result = line.rfind(" = "), disposed = line.find("_dispose(");
    if (made != line.npos && line.find('#', result) != line.npos) handles += " " + line.substr(result + 3);
    if (disposed == line.npos) continue;
    const std::string handle = " " + line.substr(disposed + 9, line.size() - disposed - 10);
    handles.erase(handles.find(handle), handle.size());
  }
  const std::string own = " DaqCtrlBase#1";
  if (const size_t place = handles.find(own); place != handles.npos) handles.erase(place, own.size());
  return handles.substr(!handles.empty());
}

ToolTest::ToolTest() : directory_(testing::TempDir() + "qutil-XXXXXX") {
  if (mkdtemp(directory_.data()) == nullptr) abort();
  state = path("state");
}

ToolTest::~ToolTest() { std::filesystem::remove_all(directory_); }

void ToolTest::useRig(const std::string& json) {
  write("rig.json", json);
  environment["VELQ_RIG"] = path("rig.json");
}

void ToolTest::write(const std::string& name, const std::string& content) const {
  std::ofstream(path(name), std::ios::binary) << content;
}

// The shell that runs the line becomes the tool.
std::string ToolTest::shellLine(const Command& command) const {
  std::map<std::string, std::string> variables = environment;
  variables.try_emplace("HOME", directory_);
  variables["LC_ALL"] = command.locale;
  variables["VELQ_STATE"] = state;
  // The sanitizers' runtime may come after what is preloaded.
  variables["ASAN_OPTIONS"] = "verify_asan_link_order=0";
  if (command.probed) {
    variables["LD_PRELOAD"] = PROBE " " SLEEP_RECORDER;
    variables["VELQ_TRACE"] = path("trace");
  }
  if (!command.faults.empty()) variables["VELQ_FAULTS"] = command.faults;
  if (!command.library.empty()) variables["LD_LIBRARY_PATH"] = command.library;
  std::string line = "exec env -i ";
  for (const auto& [name, value] : variables) line += quoted(name + "=" + value);
  // A command in front, such as valgrind.
  if (const char* const wrapper = std::getenv("QUTIL_TEST_WRAPPER")) line += std::string(wrapper) + " ";
  line += QUTIL " ";
  for (const std::string& argument : command.arguments) line += quoted(argument);
  return line + " 2>" + quoted(path("errors"));
}

Outcome ToolTest::runWith(const Command& command) const {
  Outcome outcome;
  int status = 0;
  std::filesystem::remove(path("trace"));
  if (command.keys.empty()) {
    write("input", command.input);
    const std::string files = "<" + quoted(path("input")) + ">" + quoted(path("output"));
    status = std::system((shellLine(command) + files).c_str());
    outcome.output = contentOf(path("output"));
  } else {
    status = converse(shellLine(command), command.keys, command.answers, outcome.output);
  }
  if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
  outcome.errors = contentOf(path("errors"));
  std::ifstream trace(path("trace"));
  for (std::string line; std::getline(trace, line);) outcome.trace.push_back(line);
  EXPECT_EQ(outcome.calls({"unflushed"}), "");
  EXPECT_EQ(!outcome.errors.empty(), command.expectsErrors) << "standard error: " << outcome.errors;
  return outcome;
}

Outcome ToolTest::runLine(const std::string& line) const {
  Command command{.arguments = {}, .input = "y\ny\n"};
  std::istringstream words(line);
  for (std::string word; words >> word;) {
    if (command.arguments.empty() && word[0] != '/' && word[0] != '-')
      command.faults += word + ";";
    else
      command.arguments.push_back(word);
  }
  return runWith(command);
}

void ToolTest::check(const std::vector<Case>& cases) const {
  for (const Case& test : cases) {
    SCOPED_TRACE(test.line);
    std::remove(state.c_str());
    const Outcome outcome = runLine(test.line);
    EXPECT_EQ(outcome.output, test.output);
    EXPECT_TRUE(outcome.lastCall().starts_with(test.last)) << outcome.calls();
    EXPECT_EQ(outcome.unreleased(), test.unreleased);
    EXPECT_EQ(outcome.status, test.status);
    EXPECT_EQ(outcome.calls({"# faults never reached: "}).find_first_of("123456789"), std::string::npos);
  }
}

std::pair<Outcome, Outcome> ToolTest::runBeside(const std::vector<std::string>& holder, const std::string& meanwhile,
                                                const std::string& found, const std::string& after) const {
  const std::string line = shellLine({.arguments = holder, .probed = false}) + "</dev/null >/dev/null";
  const pid_t process = fork();
  if (process == 0) execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
  Outcome beside;
  for (int i = 0; i < 500 && beside.calls().find(found) == std::string::npos; ++i) {
    usleep(10'000);
    beside = runLine(meanwhile);
  }
  EXPECT_NE(beside.calls().find(found), std::string::npos) << found;
  const Outcome last = runLine(after);
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
  return {beside, last};
}

std::string ToolTest::firmware(const std::string& name, const std::string& product, const std::string& version) const {
  write(name, "payload of " + name);
  const std::string command = "dfu-suffix -p " + product + " -d " + version + " -a " + path(name) + " > /dev/null 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return path(name);
}
