#include "compliance/process/ending.h"

#include <sys/wait.h>

#include <csignal>
#include <cstring>

namespace compliance {

namespace {

std::string shown(int status) {
  return "ends the process with " +
         (WIFSIGNALED(status) ? nameOf(WTERMSIG(status)) : "status " + std::to_string(WEXITSTATUS(status)));
}

// Which of the limits of a check may be the reason for its end; empty when none is.
std::string limitBehind(const EndNote& note, const std::string& thrown) {
  const auto in = [](size_t bytes) { return std::to_string(bytes >> 20U) + " MiB"; };
  if (WIFSIGNALED(note.status) && WTERMSIG(note.status) == SIGXFSZ) return " (a file may have " + in(MostFile) + ")";
  const bool isMemoryUsed = static_cast<size_t>(note.peakKilobytes) << 10U > MostMemory / 2;
  return isMemoryUsed || thrown.starts_with("std::bad_alloc") ? " (a check may use " + in(MostMemory) + " of memory)"
                                                              : "";
}

}  // namespace

// A check that did not come to its end failed, however the process ended.
std::string findingOf(const Ending& ending, const Report& report) {
  const std::string operation = report.operation.get(), change = report.change.get(), thrown = report.thrown.get();
  const std::string during =
      " during " + (report.isCalling ? operation : "the reading of what " + operation + " returned");
  if (!ending.note) {
    const bool mayKeepLock = ending.isHung && !change.empty();
    return ending.problem + "," + during + (mayKeepLock ? "; " + change + " before it may have kept a lock" : "");
  }
  if (!ending.problem.empty()) return ending.problem;
  const std::string limit = limitBehind(*ending.note, thrown);
  if (!thrown.empty()) return "lets an exception out" + during + ": " + thrown + limit;
  if (!report.isFinished) return shown(ending.note->status) + during + limit;
  return report.findings > 0 ? counted(report.finding.get(), report.findings) : "";
}

std::string disturbanceIn(const Ending& ending, const Report& report) {
  if (!report.disturbance.isEmpty()) return report.disturbance.get();
  if (ending.hasOutput) return "writes to standard output";
  // What else shows at the end of a process that ends early is that end's fault.
  if (!ending.note || !ending.problem.empty() || !report.isFinished) return "";
  if (ending.note->status != 0) return shown(ending.note->status) + " during exit()";
  if (!ending.isFlushed) return "ends the process before the tool's output is written, during exit()";
  return ending.note->leavesProcesses ? "leaves processes behind" : "";
}

std::string nameOf(int signal) {
  const char* const name = sigabbrev_np(signal);
  return name == nullptr ? "signal " + std::to_string(signal) : std::string("SIG") + name;
}

std::string counted(const std::string& first, unsigned count) {
  return count <= 1 ? first : first + " (and " + std::to_string(count - 1) + " more)";
}

}  // namespace compliance
