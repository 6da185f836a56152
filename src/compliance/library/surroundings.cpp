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

namespace compliance {

namespace {

// What users, shells and terminals send, and what timers and children cause.
constexpr int WatchedSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD, SIGTSTP};

// Beyond the numbers of all that is open before the library is loaded.
constexpr int LastOfTheChecker = 10;

size_t combined(size_t first, size_t second) { return first * 1000003 + second; }

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

size_t actionOf(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return reinterpret_cast<size_t>(action.sa_sigaction);
}

// What a library may do to its process, and a value that is another one afterwards.
constexpr std::pair<const char*, size_t (*)()> Aspects[] = {
    {"reads, closes or changes standard input",
     [] { return combined(descriptor(STDIN_FILENO), static_cast<size_t>(lseek(STDIN_FILENO, 0, SEEK_CUR))); }},
    {"closes or changes standard output", [] { return descriptor(STDOUT_FILENO); }},
    {"uses up all file descriptors",
     [] {
       const int number = dup(STDIN_FILENO);
       if (number >= 0) close(number);
       return size_t{number >= 0 || errno != EMFILE};
     }},
    // That of the process, and that of the thread, which takes precedence.
    {"sets the locale",
     [] { return combined(hashOf(std::setlocale(LC_ALL, nullptr)), reinterpret_cast<size_t>(uselocale(locale_t()))); }},
    {"changes the working directory",
     [] {
       char path[PATH_MAX];
       return hashOf(getcwd(path, sizeof path));
     }},
    {"changes the environment",
     [] {
       size_t hash = 0;
       for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
         hash = combined(hash, hashOf(*variable));
       return hash;
     }},
    {"changes the umask",
     [] {
       const mode_t mask = umask(0);
       umask(mask);
       return size_t{mask};
     }},
    {"changes which signals are blocked",
     [] {
       sigset_t blocked{};
       sigprocmask(SIG_BLOCK, nullptr, &blocked);
       return std::hash<std::string_view>()({reinterpret_cast<const char*>(&blocked), sizeof blocked});
     }},
    {"starts a timer", [] {
       itimerval timer{};
       getitimer(ITIMER_REAL, &timer);
       return size_t{timerisset(&timer.it_value)};
     }}};

// Passes each value to `visit`, and in two parts what a change of it is called. Nothing is allocated: this is done in
// every call, also when memory is used up.
template <typename Visit>
void readAll(const Visit& visit) {
  for (const auto& [change, read] : Aspects) visit(read(), change, "");
  for (int number = STDERR_FILENO + 1; number <= LastOfTheChecker; ++number)
    visit(descriptor(number), "closes or changes what it did not open", "");
  for (const int signal : WatchedSignals) visit(actionOf(signal), "takes over SIG", sigabbrev_np(signal));
}

}  // namespace

Surroundings::Surroundings() {
  replaceStandardInput();
  // From now on all of them are open, and not the library's.
  for (int number = STDERR_FILENO + 1; number <= LastOfTheChecker; ++number)
    if (descriptor(number) == 0) dup3(STDIN_FILENO, number, O_CLOEXEC);
  readAll([this](size_t value, auto...) { before_.push_back(value); });
}

std::string Surroundings::disturbance() const {
  std::string first;
  auto before = before_.begin();
  readAll([&](size_t value, const char* change, const char* what) {
    if (value != *before++ && first.empty()) first = std::string(change) + what;
  });
  return first;
}

}  // namespace compliance
