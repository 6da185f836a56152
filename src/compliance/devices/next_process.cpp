#include "compliance/devices/next_process.h"

#include <poll.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string_view>

#include "base/descriptor.h"

namespace compliance {

namespace {

using Task = NextProcess::Task;

constexpr char End = 0;  // of all answers to a request

template <typename Value>
std::string_view bytesOf(const Value& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

std::string readAll(int32_t) { return textOf(takeSnapshot()); }

// Answers requests until one has no tasks, or no process is left to ask. A request is a number of tasks, and the tasks
// as they are in memory: both sides are the same program.
[[noreturn]] void serve(int requests, int answers, const std::function<void()>& load) {
  for (size_t count = 0; read(requests, &count, sizeof count) == sizeof count && count > 0;) {
    std::vector<pid_t> processes;
    for (Task task{}; processes.size() < count && read(requests, &task, sizeof task) == sizeof task;) {
      const pid_t process = fork();
      if (process == 0) {
        load();
        base::writeAll(answers, task.act(task.number));
        std::exit(0);
      }
      processes.push_back(process);
    }
    for (const pid_t process : processes) waitpid(process, nullptr, 0);
    base::writeAll(answers, {&End, 1});
  }
  std::_Exit(0);
}

}  // namespace

NextProcess::NextProcess(const std::function<void()>& load) {
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) {
    if (fork() != 0) std::_Exit(0);
    requests_.closeWriteEnd();
    answers_.closeReadEnd();
    serve(requests_.readEnd(), answers_.writeEnd(), load);
  }
  waitpid(child, nullptr, 0);
  requests_.closeReadEnd();
  answers_.closeWriteEnd();
}

// Waits for the server, which would be left behind otherwise.
NextProcess::~NextProcess() {
  constexpr int LongestWaitMilliseconds = 2000;
  send({});
  pollfd end{answers_.readEnd(), 0, 0};
  poll(&end, 1, LongestWaitMilliseconds);
}

void NextProcess::send(const std::vector<Task>& tasks) const {
  const size_t count = tasks.size();
  std::string request(bytesOf(count));
  for (const Task& task : tasks) request += bytesOf(task);
  base::writeAll(requests_.writeEnd(), request);
}

std::string NextProcess::perform(const std::vector<Task>& tasks) const {
  send(tasks);
  std::string answers;
  char block[4096];
  for (ssize_t count = 0; !answers.ends_with(End) && (count = read(answers_.readEnd(), block, sizeof block)) > 0;)
    answers.append(block, static_cast<size_t>(count));
  return answers.substr(0, answers.find(End));
}

Snapshot NextProcess::look() const { return snapshotOf(perform({{readAll, 0}})); }

}  // namespace compliance
