// Signals, taken one by one together with their sender.
#pragma once

#include <sys/signalfd.h>

#include <csignal>
#include <optional>

namespace compliance {

/// The signals of this process and of those that it forks. Blocked, so that none that a library sends ends them; those
/// that stop and continue a process are left alone.
class Signals {
 public:
  /// Blocks them. Throws std::system_error.
  Signals();
  ~Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// Restores what was blocked before, for a process that shall be as any other.
  void restore() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

  /// Becomes readable when a signal arrives.
  int descriptor() const { return descriptor_; }

  /// Takes the next signal of this process; nothing when none has arrived.
  std::optional<signalfd_siginfo> take() const;

 private:
  sigset_t before_{};
  int descriptor_ = -1;
};

}  // namespace compliance
