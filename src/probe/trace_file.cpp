#include "probe/trace_file.h"

#include <fcntl.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include "probe/problem.h"

namespace probe {

int writeWithoutSignal(int descriptor, std::string_view bytes) {
  // A pipe whose reader is gone and a file at the limit of its size raise a signal that would end the process.
  sigset_t held, before;
  sigemptyset(&held);
  sigaddset(&held, SIGPIPE);
  sigaddset(&held, SIGXFSZ);
  pthread_sigmask(SIG_BLOCK, &held, &before);
  const int error = base::writeAll(descriptor, bytes) ? 0 : errno;
  // A blocked signal stays pending, and would end the process as soon as it is unblocked.
  const timespec atOnce{};
  if (error != 0) sigtimedwait(&held, nullptr, &atOnce);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return error;
}

TraceFile::TraceFile(const std::string& path) : path_(path) {
  if (path.empty()) return;
  // A trace has the passwords of overwrites in it, so it is private, and no link of another user in a shared directory
  // redirects it. Without O_NONBLOCK opening a pipe that no process reads would block the tool.
  file_ = base::Descriptor(path, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0600);
  if (!isOpen()) giveUp("cannot be opened", errno);
  // With O_NONBLOCK kept, lines would be lost when a pipe is read slowly.
  if (isOpen()) fcntl(file_.number(), F_SETFL, O_APPEND);
}

void TraceFile::write(std::string line) {
  const int error = writeWithoutSignal(descriptor(), line += '\n');
  if (error != 0) giveUp("cannot be written", error);
}

void TraceFile::giveUp(std::string_view problem, int error) {
  complain("VELQ_TRACE: " + path_ + ": " + std::string(problem) + ": " + std::strerror(error) +
           "; continuing without a trace");
  file_ = {};
}

}  // namespace probe
