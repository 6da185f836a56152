#include "probe/trace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include "probe/problem.h"

namespace probe {

namespace {

// Does `call` again for as long as a signal cuts it short.
template <typename Call>
auto persist(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// Not below 3: the tool prints to descriptor 1 even where its caller has closed that one.
int aboveStandardStreams(int descriptor) {
  if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
  const int moved = persist([=] { return fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1); });
  const int error = errno;
  close(descriptor);
  errno = error;
  return moved;
}

// Without O_NONBLOCK a pipe that nobody reads would hold up the tool here; with it, one that is read slowly would lose
// lines later.
int openToAppend(const char* path) {
  constexpr int Flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const int descriptor = aboveStandardStreams(persist([=] { return open(path, Flags, 0600); }));
  if (descriptor >= 0) fcntl(descriptor, F_SETFL, O_APPEND);
  return descriptor;
}

// A pipe whose reader is gone and a file at the limit of its size raise a signal that would end the process.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigemptyset(&held_);
    sigaddset(&held_, SIGPIPE);
    sigaddset(&held_, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &held_, &before_);
  }
  ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

  void drop() const {
    const timespec atOnce{};
    sigtimedwait(&held_, nullptr, &atOnce);
  }

 private:
  sigset_t held_, before_;
};

}  // namespace

int writeAll(int descriptor, std::string_view bytes) {
  const SignalsHeld signals;
  while (!bytes.empty()) {
    const ssize_t count = persist([=] { return write(descriptor, bytes.data(), bytes.size()); });
    if (count < 0) {
      const int error = errno;
      signals.drop();
      return error;
    }
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return 0;
}

TraceFile::TraceFile(const std::string& path) : path_(path) {
  if (path.empty()) return;
  descriptor_ = openToAppend(path.c_str());
  if (descriptor_ < 0) giveUp("cannot be opened", errno);
}

TraceFile::~TraceFile() {
  if (isOpen()) close(descriptor_);
}

void TraceFile::write(std::string line) {
  if (!isOpen()) return;
  const int error = writeAll(descriptor_, line += '\n');
  if (error != 0) giveUp("cannot be written", error);
}

void TraceFile::giveUp(std::string_view problem, int error) {
  complain("VELQ_TRACE: " + path_ + ": " + std::string(problem) + ": " + std::strerror(error) +
           "; going on without a trace");
  if (isOpen()) close(descriptor_);
  descriptor_ = -1;
}

}  // namespace probe
