#include "compliance/process/guardian.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "compliance/process/descendants.h"

namespace compliance {

namespace {

// Time for those that end because their parent has ended.
constexpr std::chrono::milliseconds Grace{500};

constexpr rlim_t MostDescriptors = 1024;

void limitTo(decltype(RLIMIT_AS) resource, rlim_t most) {
  rlimit limit{};
  getrlimit(resource, &limit);
  limit.rlim_cur = limit.rlim_max = std::min(most, limit.rlim_max);
  setrlimit(resource, &limit);
}

void limitResources() {
  // Data, for addresses that are only reserved cost nothing. What is in use counts, too: the sanitizers have terabytes.
  size_t size = 0, resident = 0, shared = 0, code = 0, libraries = 0, data = 0;
  std::ifstream("/proc/self/statm") >> size >> resident >> shared >> code >> libraries >> data;
  limitTo(RLIMIT_DATA, data * static_cast<size_t>(sysconf(_SC_PAGESIZE)) + MostMemory);
  limitTo(RLIMIT_FSIZE, MostFile);
  limitTo(RLIMIT_NOFILE, MostDescriptors);
  limitTo(RLIMIT_CORE, 0);
}

[[noreturn]] void become(const std::function<void()>& work, const Streams& streams, const Signals& signals) {
  // Apart from the guardian's group, which the library then cannot signal by kill(0, ...).
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  limitResources();
  signals.restore();
  // The caller of the checker may have ignored some, as shells do in the background; the library is not to be blamed.
  for (const int signal : {SIGINT, SIGTERM, SIGPIPE}) std::signal(signal, SIG_DFL);
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(streams.output.writeEnd.number(), STDOUT_FILENO);
  dup2(streams.messages.writeEnd.number(), STDERR_FILENO);
  dup2(streams.result.writeEnd.number(), ResultDescriptor);
  close_range(ResultDescriptor + 1, ~0U, 0);
  work();
  std::fputc(EndMark, fdopen(ResultDescriptor, "w"));
  std::exit(0);
}

EndNote noteEnd(pid_t child, const Signals& signals, pid_t supervisor) {
  EndNote note;
  while (getppid() == supervisor) {
    pollfd next{signals.descriptor(), POLLIN, 0};
    poll(&next, 1, -1);
    while (const auto signal = signals.take())
      if (signal->ssi_signo != SIGCHLD && note.signal == 0) note.signal = static_cast<int>(signal->ssi_signo);
    rusage usage{};
    for (pid_t ended = 0; (ended = wait4(-1, &note.status, WNOHANG, &usage)) > 0;) {
      note.peakKilobytes = usage.ru_maxrss;
      if (ended == child) return note;
    }
  }
  return note;
}

}  // namespace

void guard(const std::function<void()>& work, const Streams& streams, const Signals& signals, pid_t supervisor) {
  // A group of its own keeps the keys of the terminal, Ctrl-C and the like, with the supervisor.
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  adoptOrphans();
  const pid_t child = fork();
  if (child == 0) become(work, streams, signals);
  if (child < 0) _exit(EXIT_FAILURE);
  EndNote note = noteEnd(child, signals, supervisor);
  note.leavesProcesses = !waitForDescendants(Grace);
  // Otherwise the supervisor adopts and ends those that are left.
  if (getppid() != supervisor) endDescendants();
  _exit(write(streams.note.writeEnd.number(), &note, sizeof note) == sizeof note ? EXIT_SUCCESS : EXIT_FAILURE);
}

}  // namespace compliance
