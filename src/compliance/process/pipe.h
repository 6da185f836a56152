// Pipes between the processes of the checker.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "base/descriptor.h"

namespace compliance {

/// A pipe, not inherited by other programs. Each end can be closed by itself: `writeEnd = {}`.
struct Pipe {
  /// Throws std::system_error.
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    readEnd = base::Descriptor(ends[0]);
    writeEnd = base::Descriptor(ends[1]);
  }

  base::Descriptor readEnd;
  base::Descriptor writeEnd;
};

}  // namespace compliance
