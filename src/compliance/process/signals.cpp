#include "compliance/process/signals.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace compliance {

Signals::Signals() {
  // If the caller ignores it, no child can be waited for.
  std::signal(SIGCHLD, SIG_DFL);
  sigset_t taken;
  sigfillset(&taken);
  for (const int signal : {SIGTSTP, SIGTTIN, SIGTTOU, SIGCONT, SIGWINCH}) sigdelset(&taken, signal);
  sigprocmask(SIG_BLOCK, &taken, &before_);
  descriptor_ = signalfd(-1, &taken, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
}

Signals::~Signals() {
  close(descriptor_);
  restore();
}

std::optional<signalfd_siginfo> Signals::take() const {
  signalfd_siginfo signal{};
  if (read(descriptor_, &signal, sizeof signal) != sizeof signal) return std::nullopt;
  return signal;
}

}  // namespace compliance
