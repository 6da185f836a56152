#include "compliance/process/descendants.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>

namespace compliance {

namespace {

// 0 for one that does not exist.
pid_t parentOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/stat");
  // The name of the program is in parentheses and may contain some.
  std::string line;
  return std::getline(status, line) ? std::stoi(line.substr(line.rfind(')') + 4)) : 0;
}

void killChildren() {
  std::ifstream children("/proc/thread-self/children");
  for (pid_t child = 0; children >> child;) kill(child, SIGKILL);
}

// Whether a child is left after all that have ended were waited for.
bool hasChildren() {
  pid_t ended = 1;
  while (ended > 0) ended = waitpid(-1, nullptr, WNOHANG);
  return ended == 0;
}

}  // namespace

void adoptOrphans() { prctl(PR_SET_CHILD_SUBREAPER, 1); }

bool waitForDescendants(std::chrono::milliseconds grace) {
  constexpr std::chrono::milliseconds Pause{1};
  for (; hasChildren(); grace -= Pause) {
    if (grace < Pause) return false;
    std::this_thread::sleep_for(Pause);
  }
  return true;
}

// The children of those that are killed become children of this process.
void endDescendants() {
  while (hasChildren()) {
    killChildren();
    waitpid(-1, nullptr, 0);
  }
}

bool isDescendant(pid_t process) {
  while (process > 1 && process != getpid()) process = parentOf(process);
  return process == getpid();
}

}  // namespace compliance
