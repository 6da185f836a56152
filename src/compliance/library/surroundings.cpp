#include "compliance/library/surroundings.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <climits>
#include <clocale>
#include <csignal>
#include <cstring>
#include <string_view>

namespace compliance {

namespace {

// What users, shells and terminals send, and what timers and children cause.
constexpr int Signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD, SIGTSTP};

size_t combined(size_t first, size_t second) { return first * 1000003 + second; }

size_t hashOf(const void* data, size_t size) {
  return std::hash<std::string_view>()({static_cast<const char*>(data), size});
}

size_t hashOf(const char* text) { return std::hash<std::string_view>()(text == nullptr ? "" : text); }

void replaceStandardInput() {
  const int input = memfd_create("standard input", MFD_CLOEXEC);
  if (input < 0) return;
  if (write(input, "\n", 1) == 1) lseek(input, 0, SEEK_SET);
  dup2(input, STDIN_FILENO);
  close(input);
}

size_t standardInput() {
  struct stat file {};
  fstat(STDIN_FILENO, &file);
  const auto position = static_cast<size_t>(lseek(STDIN_FILENO, 0, SEEK_CUR));
  return combined(combined(file.st_ino, position), static_cast<size_t>(fcntl(STDIN_FILENO, F_GETFL)));
}

// The locale of the process, and that of the thread, which takes precedence.
size_t localeInUse() {
  return combined(hashOf(std::setlocale(LC_ALL, nullptr)), reinterpret_cast<size_t>(uselocale(locale_t())));
}

size_t workingDirectory() {
  char path[PATH_MAX];
  return hashOf(getcwd(path, sizeof path));
}

size_t environment() {
  size_t hash = 0;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
    hash = combined(hash, hashOf(*variable));
  return hash;
}

size_t fileModeMask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

size_t blockedSignals() {
  sigset_t blocked{};
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  return hashOf(&blocked, sizeof blocked);
}

size_t isTimerRunning() {
  itimerval timer{};
  getitimer(ITIMER_REAL, &timer);
  return timerisset(&timer.it_value);
}

size_t actionOf(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return reinterpret_cast<size_t>(action.sa_sigaction);
}

}  // namespace

Surroundings::Surroundings() {
  replaceStandardInput();
  watch("reads, closes or changes standard input", standardInput);
  watch("sets the locale", localeInUse);
  watch("changes the working directory", workingDirectory);
  watch("changes the environment", environment);
  watch("changes the umask", fileModeMask);
  watch("changes which signals are blocked", blockedSignals);
  watch("starts a timer", isTimerRunning);
  for (const int signal : Signals)
    watch(std::string("takes over SIG") + sigabbrev_np(signal), [signal] { return actionOf(signal); });
}

std::string Surroundings::disturbance() const {
  for (const Aspect& aspect : aspects_)
    if (aspect.read() != aspect.before) return aspect.change;
  return "";
}

}  // namespace compliance
