// Pipes between the processes of the checker.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace compliance {

/// A pipe, not inherited by other programs. Both ends are closed at the end of its life.
class Pipe {
 public:
  /// Throws std::system_error.
  Pipe() {
    if (pipe2(ends_, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  }
  ~Pipe() {
    closeReadEnd();
    closeWriteEnd();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int readEnd() const { return ends_[0]; }
  int writeEnd() const { return ends_[1]; }
  void closeReadEnd() { closeEnd(ends_[0]); }
  void closeWriteEnd() { closeEnd(ends_[1]); }

 private:
  static void closeEnd(int& end) {
    if (end >= 0) close(end);
    end = -1;
  }

  int ends_[2] = {-1, -1};
};

}  // namespace compliance
