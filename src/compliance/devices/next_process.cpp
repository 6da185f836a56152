#include "compliance/devices/next_process.h"

#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>

#include "base/descriptor.h"

namespace compliance {

namespace {

constexpr char End = 0;  // of all answers to a request

// As it is in memory: both sides are the same program.
struct Request {
  size_t count = 0;
  NextProcess::Task tasks[4] = {};
};

std::string_view bytesOf(const Request& request) { return {reinterpret_cast<const char*>(&request), sizeof request}; }

std::string readAll(int32_t) { return textOf(takeSnapshot()); }

// Answers requests until one has no tasks, or no process is left to ask.
[[noreturn]] void serve(int requests, int answers, const std::function<void()>& load) {
  for (Request request; read(requests, &request, sizeof request) == sizeof request && request.count > 0;) {
    for (size_t i = 0; i < request.count; ++i) {
      if (fork() != 0) continue;
      load();
      base::writeAll(answers, request.tasks[i].act(request.tasks[i].number));
      std::exit(0);
    }
    while (waitpid(-1, nullptr, 0) > 0) continue;
    base::writeAll(answers, {&End, 1});
  }
  base::writeAll(answers, {&End, 1});
  std::_Exit(0);
}

}  // namespace

NextProcess::NextProcess(const std::function<void()>& load) {
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) {
    if (fork() != 0) std::_Exit(0);
    requests_.writeEnd = {};
    answers_.readEnd = {};
    serve(requests_.readEnd.number(), answers_.writeEnd.number(), load);
  }
  waitpid(child, nullptr, 0);
  requests_.readEnd = {};
  answers_.writeEnd = {};
}

// Waits for the end of the server, which would be left behind otherwise.
NextProcess::~NextProcess() {
  constexpr int LongestWaitMilliseconds = 10'000;
  requests_.writeEnd.write(bytesOf({}));
  pollfd end{answers_.readEnd.number(), POLLIN, 0};
  poll(&end, 1, LongestWaitMilliseconds);
}

std::string NextProcess::perform(const std::vector<Task>& tasks) const {
  Request request{.count = tasks.size()};
  std::copy(tasks.begin(), tasks.end(), request.tasks);
  requests_.writeEnd.write(bytesOf(request));
  std::string answers;
  char block[4096];
  for (ssize_t count = 0;
       !answers.ends_with(End) && (count = read(answers_.readEnd.number(), block, sizeof block)) > 0;)
    answers.append(block, static_cast<size_t>(count));
  return answers.substr(0, answers.find(End));
}

Snapshot NextProcess::look() const { return snapshotOf(perform({{readAll, 0}})); }

}  // namespace compliance
