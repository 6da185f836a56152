#include "compliance/library/surroundings.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <clocale>
#include <csignal>
#include <cstring>
#include <string_view>

namespace compliance {

namespace {

// What users, shells and terminals send, and what timers and children cause.
constexpr int Signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD, SIGTSTP};

// Beyond the numbers of all that is open before the library is loaded.
constexpr int LastOfTheChecker = 10;

size_t combined(size_t first, size_t second) { return first * 1000003 + second; }

size_t hashOf(const void* data, size_t size) {
  return std::hash<std::string_view>()({static_cast<const char*>(data), size});
}

size_t hashOf(const char* text) { return std::hash<std::string_view>()(text == nullptr ? "" : text); }

void replaceStandardInput() {
  const int input = memfd_create("standard input", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (input < 0) return;
  if (write(input, "\n", 1) == 1) lseek(input, 0, SEEK_SET);
  fcntl(input, F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK);
  dup2(input, STDIN_FILENO);
  close(input);
}

size_t descriptor(int number) {
  struct stat file {};
  return fstat(number, &file) == 0 ? combined(file.st_ino, static_cast<size_t>(fcntl(number, F_GETFL))) : 0;
}

size_t standardInput() {
  return combined(descriptor(STDIN_FILENO), static_cast<size_t>(lseek(STDIN_FILENO, 0, SEEK_CUR)));
}

// Whether another file can be opened.
size_t hasFreeDescriptor() {
  const int number = dup(STDIN_FILENO);
  if (number >= 0) close(number);
  return number >= 0 || errno != EMFILE;
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
  watch("closes or changes standard output", [] { return descriptor(STDOUT_FILENO); });
  for (int number = STDERR_FILENO + 1; number <= LastOfTheChecker; ++number)
    if (descriptor(number) != 0) watch("closes or changes what it did not open", [=] { return descriptor(number); });
  watch("uses up all file descriptors", hasFreeDescriptor);
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
