// Processes that a tool starts later: they load the library again, and share nothing with this process.
#pragma once

#include "compliance/devices/snapshot.h"
#include "compliance/process/pipe.h"

namespace compliance {

/// A server that forks such processes. It is forked before this process loads the library, because a process that is
/// forked afterwards would have the library's state in it. It is no child of this process, for a library may wait for
/// all children.
class NextProcess {
 public:
  /// `load` loads the library; it is called in the new processes only. Throws std::system_error.
  explicit NextProcess(const std::function<void()>& load);
  ~NextProcess();
  NextProcess(const NextProcess&) = delete;
  NextProcess& operator=(const NextProcess&) = delete;

  /// What such a process does with a device, and its answer, which has no zero in it.
  struct Task {
    std::string (*act)(int32_t number);
    int32_t number;
  };

  /// Does each of up to four tasks in a process of its own, all of them at once, and returns their answers one after
  /// the other. Part of an answer is missing when its process ended early.
  std::string perform(const std::vector<Task>& tasks) const;

  /// All that can be read. What is missing because the process ended early shows as a difference.
  Snapshot look() const;

 private:
  Pipe requests_;
  Pipe answers_;
};

}  // namespace compliance
