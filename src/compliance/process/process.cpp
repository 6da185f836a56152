#include "compliance/process/process.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <system_error>

namespace compliance {

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

sigset_t childEnds() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGCHLD);
  return signals;
}

[[noreturn]] void become(const std::function<void()>& work, const SharedFile& output, const sigset_t& signals) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const rlimit none{};
  setrlimit(RLIMIT_CORE, &none);
  sigprocmask(SIG_SETMASK, &signals, nullptr);
  // Who started the checker may have ignored some, as shells do in the background; the library is not to be blamed.
  for (const int signal : {SIGINT, SIGTERM, SIGPIPE}) std::signal(signal, SIG_DFL);
  const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
  dup2(input, STDIN_FILENO);
  dup2(output.descriptor(), STDOUT_FILENO);
  work();
  std::exit(0);
}

// Whether a child may have ended before the deadline.
bool waitForSignal(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  if (left <= 0) return false;
  timespec wait{};
  wait.tv_sec = static_cast<time_t>(left / 1000);
  wait.tv_nsec = static_cast<long>(left % 1000 * 1000000);
  const sigset_t signals = childEnds();
  return sigtimedwait(&signals, nullptr, &wait) > 0 || errno == EINTR;
}

}  // namespace

SharedFile::SharedFile() : descriptor_(memfd_create("velq-compliance", MFD_CLOEXEC)) {
  if (descriptor_ < 0) fail("memfd_create");
}

SharedFile::~SharedFile() { close(descriptor_); }

void SharedFile::clear() const {
  if (ftruncate(descriptor_, 0) != 0 || lseek(descriptor_, 0, SEEK_SET) != 0) fail("ftruncate");
}

void SharedFile::append(const std::string& text) const {
  for (size_t written = 0; written < text.size();) {
    const ssize_t count = write(descriptor_, text.data() + written, text.size() - written);
    if (count < 0) fail("write");
    written += static_cast<size_t>(count);
  }
}

std::string SharedFile::text() const {
  struct stat file {};
  if (fstat(descriptor_, &file) != 0) fail("fstat");
  std::string text(static_cast<size_t>(file.st_size), '\0');
  const ssize_t count = pread(descriptor_, text.data(), text.size(), 0);
  if (count < 0) fail("pread");
  text.resize(static_cast<size_t>(count));
  return text;
}

std::optional<int> runInProcess(const std::function<void()>& work, const SharedFile& output,
                                std::chrono::seconds limit) {
  const sigset_t signals = childEnds();
  sigset_t before;
  // Blocked for good, so that an end between two looks is not missed.
  sigprocmask(SIG_BLOCK, &signals, &before);
  sigdelset(&before, SIGCHLD);
  output.clear();
  const Clock::time_point deadline = Clock::now() + limit;
  const pid_t child = fork();
  if (child < 0) fail("fork");
  if (child == 0) become(work, output, before);
  setpgid(child, child);
  int status = 0;
  bool isOver = false;
  do isOver = waitpid(child, &status, WNOHANG) == child;
  while (!isOver && waitForSignal(deadline));
  kill(-child, SIGKILL);
  if (!isOver) waitpid(child, nullptr, 0);
  return isOver ? std::optional(status) : std::nullopt;
}

}  // namespace compliance
