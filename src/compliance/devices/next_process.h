// The devices as the next run of a tool finds them.
#pragma once

#include <sys/types.h>

#include <functional>

#include "compliance/devices/snapshot.h"

namespace compliance {

/// A process in which nothing has been loaded yet, kept aside to make such runs.
class NextProcess {
 public:
  /// `load` loads the library; it is called in the new processes only. Made before this one does so.
  explicit NextProcess(const std::function<void()>& load);
  ~NextProcess();
  NextProcess(const NextProcess&) = delete;
  NextProcess& operator=(const NextProcess&) = delete;

  /// What such a run does ahead of reading, to one device.
  using Act = void (*)(int32_t number);

  /// Loads the library in a new process, acts there when asked to, and reads what can be read. What is missing at the
  /// end of a process that ended before its time shows as a difference.
  Snapshot look(Act act = nullptr, int32_t number = 0) const;

 private:
  int requests_ = -1;
  int answers_ = -1;
};

}  // namespace compliance
