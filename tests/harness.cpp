#include "harness.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

const char OneBoard[] = R"({"devices": [{"number": 0, "description": "Board", "product_id": "0x10"}]})";

namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> list;
  for (std::string& text : texts) list.push_back(text.data());
  list.push_back(nullptr);
  return list;
}

struct Pipe {
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) abort();
  }
  int ends[2];
};

// Feeds `input` to one descriptor while it reads the two others to their ends; a terminal ends with an error.
void exchange(int in, const std::string& input, int out, std::string& output, int err, std::string& errors) {
  size_t sent = 0;
  pollfd files[] = {{in, POLLOUT, 0}, {out, POLLIN, 0}, {err, POLLIN, 0}};
  std::string* const texts[] = {nullptr, &output, &errors};
  while (files[1].fd >= 0 || files[2].fd >= 0) {
    if (sent == input.size()) files[0].fd = -1;
    if (poll(files, 3, -1) < 0) abort();
    if (files[0].fd >= 0 && files[0].revents != 0) {
      const ssize_t count = write(in, input.data() + sent, input.size() - sent);
      sent = count > 0 ? sent + static_cast<size_t>(count) : input.size();
    }
    for (int i : {1, 2}) {
      if (files[i].fd < 0 || files[i].revents == 0) continue;
      char bytes[4096];
      const ssize_t count = read(files[i].fd, bytes, sizeof bytes);
      if (count > 0)
        texts[i]->append(bytes, static_cast<size_t>(count));
      else
        files[i].fd = -1;
    }
  }
}

[[noreturn]] void execute(const std::vector<std::string>& arguments, std::vector<std::string> variables) {
  // A command in front, such as valgrind, its words separated by blanks.
  const char* const wrapper = std::getenv("QUTIL_TEST_WRAPPER");
  std::istringstream words(wrapper == nullptr ? "" : wrapper);
  std::vector<std::string> command(std::istream_iterator<std::string>(words), {});
  command.emplace_back(QUTIL);
  command.insert(command.end(), arguments.begin(), arguments.end());
  execve(command[0].c_str(), pointers(command).data(), pointers(variables).data());
  _exit(127);
}

void awaitEnd(pid_t process, Outcome& outcome) {
  int status = 0;
  waitpid(process, &status, 0);
  if (WIFEXITED(status)) outcome.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
}

void runOnPipes(const Command& command, const std::vector<std::string>& variables, Outcome& outcome) {
  Pipe in, out, err;
  const pid_t process = fork();
  if (process == 0) {
    dup2(in.ends[0], 0);
    dup2(out.ends[1], 1);
    dup2(err.ends[1], 2);
    execute(command.arguments, variables);
  }
  close(in.ends[0]);
  close(out.ends[1]);
  close(err.ends[1]);
  if (command.input.empty()) close(in.ends[1]);
  exchange(in.ends[1], command.input, out.ends[0], outcome.output, err.ends[0], outcome.errors);
  if (!command.input.empty()) close(in.ends[1]);
  close(out.ends[0]);
  close(err.ends[0]);
  awaitEnd(process, outcome);
}

// Echo stays on, so what the terminal echoes in line mode stands in the output, and a key read raw does not.
void runOnTerminal(const Command& command, const std::vector<std::string>& variables, Outcome& outcome) {
  Pipe err;
  int terminal = -1;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process < 0) FAIL() << "no pseudo-terminal: " << std::strerror(errno);
  if (process == 0) {
    termios settings{};
    tcgetattr(0, &settings);
    settings.c_oflag &= ~static_cast<tcflag_t>(ONLCR);
    tcsetattr(0, TCSANOW, &settings);
    dup2(err.ends[1], 2);
    execute(command.arguments, variables);
  }
  close(err.ends[1]);
  exchange(terminal, command.keys, terminal, outcome.output, err.ends[0], outcome.errors);
  close(terminal);
  close(err.ends[0]);
  awaitEnd(process, outcome);
}

}  // namespace

std::string Outcome::calls(const std::vector<std::string>& operations) const {
  std::string lines;
  for (const std::string& line : trace) {
    for (const std::string& operation : operations) {
      if (!line.starts_with(operation)) continue;
      lines += line + "\n";
      break;
    }
  }
  return lines;
}

std::string Outcome::unreleased(const std::string& kind) const {
  std::vector<std::string> handles;
  for (const std::string& line : trace) {
    const size_t result = line.rfind(" = " + kind + "#");
    if (line.starts_with(kind + "_Create(") && result != std::string::npos) handles.push_back(line.substr(result + 3));
    if (line.starts_with(kind + "_dispose(")) std::erase(handles, line.substr(kind.size() + 9, line.size() - kind.size() - 10));
  }
  std::string list;
  for (const std::string& handle : handles) list += (list.empty() ? "" : " ") + handle;
  return list;
}

ToolTest::ToolTest() : folder_(testing::TempDir() + "qutil-XXXXXX") {
  if (mkdtemp(folder_.data()) == nullptr) abort();
  state = path("state");
}

ToolTest::~ToolTest() { std::filesystem::remove_all(folder_); }

void ToolTest::useRig(const std::string& json) {
  write("rig.json", json);
  environment["VELQ_RIG"] = path("rig.json");
}

void ToolTest::write(const std::string& name, const std::string& content) const { std::ofstream(path(name), std::ios::binary) << content; }

std::vector<std::string> ToolTest::environmentOf(const Command& command) const {
  std::map<std::string, std::string> variables = environment;
  variables["HOME"] = folder_;
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
  std::vector<std::string> list;
  for (const auto& [name, value] : variables) list.push_back(name + "=" + value);
  return list;
}

Outcome ToolTest::runWith(const Command& command) const {
  Outcome outcome;
  std::filesystem::remove(path("trace"));
  std::signal(SIGPIPE, SIG_IGN);
  (command.keys.empty() ? runOnPipes : runOnTerminal)(command, environmentOf(command), outcome);
  std::ifstream trace(path("trace"));
  for (std::string line; std::getline(trace, line);) outcome.trace.push_back(line);
  EXPECT_EQ(outcome.calls({"unflushed"}), "");
  EXPECT_EQ(!outcome.errors.empty(), command.expectsErrors) << "standard error: " << outcome.errors;
  return outcome;
}

pid_t ToolTest::start(const std::vector<std::string>& arguments) const {
  const pid_t process = fork();
  if (process == 0) {
    const int nowhere = open("/dev/null", O_RDWR);
    dup2(nowhere, 0);
    dup2(nowhere, 1);
    execute(arguments, environmentOf({.arguments = arguments, .probed = false}));
  }
  return process;
}

std::string ToolTest::firmware(const std::string& name, const std::string& product, const std::string& version) const {
  write(name, "payload of " + name);
  const std::string command = "dfu-suffix -p " + product + " -d " + version + " -a " + path(name) + " > /dev/null 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return path(name);
}
