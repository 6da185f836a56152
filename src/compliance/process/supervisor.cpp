#include "compliance/process/supervisor.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>

#include <utility>

#include "base/descriptor.h"
#include "compliance/process/descendants.h"

namespace compliance {

namespace {

using Clock = std::chrono::steady_clock;

// How late a hang, output without end or a line for the user may be noticed; the end of a process is noticed at once.
constexpr std::chrono::milliseconds Tick{50};
constexpr size_t MostMessages = size_t{64} << 10U;
// Far more than the facts of 10,000 devices.
constexpr size_t MostResult = size_t{16} << 20U;

// Reads what is there, and closes the pipe at its end.
std::string readSome(Pipe& pipe) {
  char block[65536];
  const ssize_t count = read(pipe.readEnd.number(), block, sizeof block);
  if (count == 0) pipe.readEnd = {};
  return {block, count < 0 ? 0 : static_cast<size_t>(count)};
}

}  // namespace

// One run, from the start of its processes to their end.
class Supervisor::Run {
 public:
  Run(const Supervisor& supervisor, const std::string& name, const std::function<void()>& work, bool endsBySignal)
      : supervisor_(supervisor), name_(name), endsBySignal_(endsBySignal) {
    const pid_t self = getpid();
    guardian_ = fork();
    if (guardian_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (guardian_ == 0) guard(work, streams_, supervisor_.signals_, self);
    for (Pipe* const pipe : {&streams_.note, &streams_.messages, &streams_.result}) {
      pipe->writeEnd = {};
      fcntl(pipe->readEnd.number(), F_SETFL, O_NONBLOCK);
    }
  }

  Ending waitForEnd() {
    while (isGoingOn() && !takeNote()) {
      pollfd ends[] = {{streams_.note.readEnd.number(), POLLIN, 0},
                       {supervisor_.signals_.descriptor(), POLLIN, 0},
                       {streams_.messages.readEnd.number(), POLLIN, 0},
                       {streams_.result.readEnd.number(), POLLIN, 0}};
      poll(ends, std::size(ends), static_cast<int>(Tick.count()));
      takeSignals();
      forwardMessages();
      takeResult();
      judgeTime();
      judgeOutput();
      showProgress();
    }
    endAll();
    return std::move(ending_);
  }

 private:
  bool isGoingOn() const { return ending_.problem.empty() && (ending_.interruption == 0 || !endsBySignal_); }

  // Returns whether the guardian has ended.
  bool takeNote() {
    EndNote note;
    const ssize_t count = read(streams_.note.readEnd.number(), &note, sizeof note);
    if (count == sizeof note) ending_.note = note;
    return count >= 0;
  }

  void takeSignals() {
    while (const auto signal = supervisor_.signals_.take()) {
      const int number = static_cast<int>(signal->ssi_signo);
      // These are consequences of what this process does itself.
      if (number == SIGCHLD || number == SIGPIPE || number == SIGXFSZ) continue;
      const auto sender = static_cast<pid_t>(signal->ssi_pid);
      // The process of the check may have ended since.
      if (sender == supervisor_.report_.process || isDescendant(sender))
        ending_.problem = "sends " + nameOf(number) + " to the checker";
      else
        ending_.interruption = number;
    }
  }

  void forwardMessages() {
    const std::string messages = readSome(streams_.messages).substr(0, MostMessages - messageBytes_);
    messageBytes_ += messages.size();
    base::writeAll(STDERR_FILENO, messages);
    if (!messages.empty() && messageBytes_ == MostMessages)
      base::writeAll(STDERR_FILENO, "\nvelq-compliance: the library's other messages are left out\n");
  }

  void takeResult() {
    ending_.result += readSome(streams_.result);
    if (ending_.result.size() > MostResult) ending_.problem = "writes to descriptors that are not its own";
  }

  void judgeTime() {
    const Clock::time_point now = Clock::now();
    const uint64_t calls = supervisor_.report_.calls;
    if (std::exchange(calls_, calls) != calls) lastCall_ = now;
    if (now - lastCall_ <= supervisor_.limit_) return;
    ending_.isHung = true;
    ending_.problem = "does not return within " + std::to_string(supervisor_.limit_.count()) + " s";
  }

  // The pipe keeps the beginning of the output; nothing has to be read from it.
  void judgeOutput() {
    int unread = 0;
    ioctl(streams_.output.readEnd.number(), FIONREAD, &unread);
    ending_.hasOutput = unread > 0;
    pollfd room{streams_.output.writeEnd.number(), POLLOUT, 0};
    if (poll(&room, 1, 0) == 0) ending_.problem = "writes to standard output without end";
  }

  void endAll() {
    if (!ending_.note) kill(guardian_, SIGKILL);
    int status = 0;
    waitpid(guardian_, &status, 0);
    endDescendants();
    if (WIFEXITED(status) && !ending_.note && isGoingOn()) throw std::runtime_error("no process for " + name_);
    if (!ending_.note && isGoingOn())
      ending_.problem = "ends the process that started it with " + nameOf(WTERMSIG(status));
    else if (ending_.note && ending_.note->signal != 0)
      ending_.problem = "sends " + nameOf(ending_.note->signal) + " to the process that started it";
    judgeOutput();
    forwardMessages();
    takeResult();
    ending_.isFlushed = ending_.result.ends_with(EndMark);
    if (ending_.isFlushed) ending_.result.pop_back();
    if (isatty(STDERR_FILENO)) base::writeAll(STDERR_FILENO, "\r\x1b[K");
  }

  // Only for users that have to wait.
  void showProgress() const {
    if (Clock::now() - begin_ < std::chrono::seconds(1) || !isatty(STDERR_FILENO)) return;
    base::writeAll(STDERR_FILENO, "\r" + name_ + ": " + std::to_string(calls_) + " calls\x1b[K");
  }

  const Supervisor& supervisor_;
  const std::string name_;
  const bool endsBySignal_;
  Streams streams_;
  pid_t guardian_ = 0;
  Ending ending_;
  size_t messageBytes_ = 0;
  uint64_t calls_ = 0;
  const Clock::time_point begin_ = Clock::now();
  Clock::time_point lastCall_ = begin_;
};

Supervisor::Supervisor(std::chrono::seconds limit, Report& report) : limit_(limit), report_(report) { adoptOrphans(); }

Ending Supervisor::run(const std::string& name, const std::function<void()>& work, bool endsBySignal) {
  new (&report_) Report();
  const auto reported = [&] {
    report_.process = getpid();
    work();
  };
  return Run(*this, name, reported, endsBySignal).waitForEnd();
}

}  // namespace compliance
