// Signals, taken one by one together with their sender.
#pragma once

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <system_error>

namespace compliance {

/// The signals of this process and of those that it forks. Blocked, so that none that a library sends ends them; those
/// that stop and continue a process are left alone.
class Signals {
 public:
  /// Blocks them. Throws std::system_error.
  Signals() {
    // If the caller ignores it, no child can be waited for.
    std::signal(SIGCHLD, SIG_DFL);
    sigset_t taken;
    sigfillset(&taken);
    for (const int signal : {SIGTSTP, SIGTTIN, SIGTTOU, SIGCONT, SIGWINCH}) sigdelset(&taken, signal);
    sigprocmask(SIG_BLOCK, &taken, &before_);
    descriptor_ = signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
  }
  ~Signals() {
    close(descriptor_);
    restore();
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// Restores what was blocked before, for a process that shall be as any other.
  void restore() const { sigprocmask(SIG_SETMASK, &before_, nullptr); }

  /// Becomes readable when a signal arrives.
  int descriptor() const { return descriptor_; }

  /// Takes the next signal of this process; nothing when none has arrived.
  std::optional<signalfd_siginfo> take() const {
    signalfd_siginfo signal{};
    if (read(descriptor_, &signal, sizeof signal) != sizeof signal) return std::nullopt;
    return signal;
  }

 private:
  sigset_t before_{};
  int descriptor_ = -1;
};

}  // namespace compliance
