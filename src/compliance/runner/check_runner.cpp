#include "compliance/runner/check_runner.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "base/descriptor.h"
#include "compliance/devices/restoration.h"
#include "text/one_line.h"

namespace compliance {

namespace {

// Each hang costs the whole limit, and a library that hangs three times will hang again.
constexpr size_t MostHangs = 3;

constexpr const char* ProcessCheck = "process-left-alone";

// Shared with all processes that are forked, until they end.
Report& sharedReport() {
  void* const memory = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  return *new (memory) Report;
}

// Within the process of the check. The server of the next processes starts first: it must not have the library loaded.
void perform(const Check& check, const std::string& path, Report& report, const Snapshot& before) {
  const Findings findings(report);
  Library library(path, report);
  try {
    const NextProcess next([&] { library.load(); });
    if (*check.needs != 0) library.load();
    check.run({library, next, before, findings});
  } catch (const std::exception& error) {
    findings.at("in the checker").expect(false, error.what());
  }
  report.isFinished = true;
  report.operation.set("exit()");
  report.isCalling = true;
}

std::string endingOf(int status) {
  if (!WIFSIGNALED(status)) return "ends the process with status " + std::to_string(WEXITSTATUS(status));
  return std::string("ends the process with SIG") + sigabbrev_np(WTERMSIG(status));
}

// Which of the limits of a check may be the reason for its end; empty when none is.
std::string limitBehind(const EndNote& note, const std::string& thrown) {
  const auto shown = [](size_t bytes) { return std::to_string(bytes >> 20U) + " MiB"; };
  if (WIFSIGNALED(note.status) && WTERMSIG(note.status) == SIGXFSZ) return " (a file may have " + shown(MostFile) + ")";
  const bool isMemoryUsed = static_cast<size_t>(note.peakKilobytes) << 10U > MostMemory / 2;
  return isMemoryUsed || thrown.starts_with("std::bad_alloc") ? " (a check may use " + shown(MostMemory) + " of memory)"
                                                              : "";
}

// Flushes, so that the line is there if this process is ended.
void print(const std::string& line) {
  if (printf("%s\n", text::oneLine(line).c_str()) < 0 || std::fflush(stdout) != 0)
    throw std::system_error(errno, std::generic_category(), "standard output");
}

std::string counted(const std::string& first, unsigned count) {
  return count == 1 ? first : first + " (and " + std::to_string(count - 1) + " more)";
}

}  // namespace

CheckRunner::CheckRunner(const std::string& path, std::chrono::seconds limit, bool writes)
    : path_(path), writes_(writes), report_(sharedReport()), supervisor_(limit, report_) {
  // Without a line for the version, which prove(1) takes up to 13 only.
  print("1.." + std::to_string(std::size(AllChecks) + 1));
}

void CheckRunner::run(const Check& check) {
  if (const std::string need = unmetNeed(check); !need.empty()) {
    ++skipped_;
    return print(numbered("ok", check.name) + " # SKIP " + need);
  }
  Verdict verdict = runOne(check);
  const bool writes = check.access == CheckAccess::Writes;
  const Ending after = writes ? look() : Ending();
  // The check has looked before it disposed of its handles and ended.
  if (writes && verdict.finding.empty()) verdict.finding = lossIn(after);
  if (interruption_ == 0) report(check.name, verdict);
  if (writes && !passed_.contains(check.name)) restore(after);
  if (interruption_ != 0) print("Bail out! Ended by the user");
}

std::string CheckRunner::unmetNeed(const Check& check) const {
  if (!writes_ && check.access == CheckAccess::Writes) return "needs --write";
  if (isAltered_ && check.access == CheckAccess::Writes) return "devices are not restored";
  if (hangs_ >= MostHangs) return "calls of " + std::to_string(hangs_) + " checks have not returned";
  std::istringstream needs(check.needs);
  for (std::string need; needs >> need;) {
    if (need == "*" && failed_ > 0) return "needs all checks before it";
    if (need != "*" && !passed_.contains(need)) return "needs " + need;
  }
  return "";
}

Verdict CheckRunner::runOne(const Check& check) {
  const Ending ending = supervisor_.run(check.name, [&] { perform(check, path_, report_, before_); });
  // Once, for it is the same in every process.
  if (!report_.layer.isEmpty() && passed_.empty() && failed_ == 0) print("# through " + report_.layer.get());
  interruption_ = ending.interruption;
  if (disturbance_.empty()) disturbance_ = disturbanceIn(ending);
  if (report_.slowest > slowest_) {
    slowest_ = report_.slowest;
    slowestOperation_ = report_.slowestOperation.get();
  }
  if (check.run == lookFirst) before_ = snapshotOf(ending.result);
  return {findingOf(ending), counted(report_.refusal.get(), report_.refusals), report_.refusals};
}

std::string CheckRunner::disturbanceIn(const Ending& ending) const {
  if (!report_.disturbance.isEmpty()) return report_.disturbance.get();
  if (ending.hasOutput) return "writes to standard output";
  // What else shows at the end of a process that ends early is that end's fault.
  if (!ending.note || !ending.problem.empty() || !report_.isFinished) return "";
  if (ending.note->status != 0) return endingOf(ending.note->status) + " during exit()";
  if (!ending.isFlushed) return "ends the process before the tool's output is written, during exit()";
  return ending.note->leavesProcesses ? "leaves processes behind" : "";
}

// A check that did not come to its end failed, however the process ended.
std::string CheckRunner::findingOf(const Ending& ending) {
  const std::string operation = report_.operation.get();
  const std::string during =
      " during " + (report_.isCalling ? operation : "the reading of what " + operation + " returned");
  if (!ending.note) {
    if (!ending.isHung) return ending.problem + "," + during;
    ++hangs_;
    const std::string change = report_.change.get();
    return ending.problem + "," + during + (change.empty() ? "" : "; " + change + " before it may have kept a lock");
  }
  if (!ending.problem.empty()) return ending.problem;
  const std::string thrown = report_.thrown.get(), limit = limitBehind(*ending.note, thrown);
  if (!thrown.empty()) return "lets an exception out" + during + ": " + thrown + limit;
  if (!report_.isFinished) return endingOf(ending.note->status) + during + limit;
  return report_.findings > 0 ? counted(report_.finding.get(), report_.findings) : "";
}

Ending CheckRunner::runLoaded(const std::function<void()>& work) {
  // To its end, for a user, or timeout(1), may send more than one signal.
  constexpr bool EndsBySignal = false;
  const auto loaded = [&] {
    Library(path_, report_).load();
    work();
  };
  const Ending ending = supervisor_.run("restoring", loaded, EndsBySignal);
  if (interruption_ == 0) interruption_ = ending.interruption;
  return ending;
}

Ending CheckRunner::look() {
  return runLoaded([] { base::writeAll(ResultDescriptor, textOf(takeSnapshot())); });
}

std::string CheckRunner::lossIn(const Ending& look) {
  if (look.result.empty()) return findingOf(look);
  const auto all = differences(before_, snapshotOf(look.result));
  if (all.empty()) return "";
  const auto& [fact, values] = *all.begin();
  return fact + " is " + values.found + ", not " + values.wanted + ", after the process has ended";
}

void CheckRunner::restore(const Ending& first) {
  runLoaded([this] { restoreDevices(before_); });
  const Ending last = look();
  const bool isKnown = !last.result.empty();
  const auto left = alterations(before_, snapshotOf((isKnown ? last : first).result));
  isAltered_ = isAltered_ || !isKnown || !left.empty();
  if (!isKnown) print("# NOT RESTORED: the library " + findingOf(last));
  for (const auto& [fact, values] : left)
    print("# NOT RESTORED: " + fact + " is " + values.found + ", was " + values.wanted);
  if (first.result.empty()) return;
  for (const auto& [fact, values] : alterations(before_, snapshotOf(first.result)))
    if (!left.contains(fact)) print("# restored: " + fact + " " + values.wanted + ", was left at " + values.found);
}

std::string CheckRunner::numbered(const char* result, const char* name) const {
  return std::string(result) + " " + std::to_string(passed_.size() + failed_ + skipped_) + " - " + name;
}

void CheckRunner::report(const char* name, const Verdict& verdict) {
  if (!verdict.finding.empty()) {
    ++failed_;
    print(numbered("not ok", name));
    print("# " + verdict.finding);
    return;
  }
  passed_.insert(name);
  refusals_ += verdict.refusals;
  print(numbered("ok", name));
  if (verdict.refusals > 0) print("# refused, not tried: " + verdict.refused);
}

bool CheckRunner::finish() {
  report(ProcessCheck, {.finding = disturbance_, .refused = ""});
  char slowest[100];
  std::snprintf(slowest, sizeof slowest, "%.3f s, %s", static_cast<double>(slowest_) / 1e9, slowestOperation_.c_str());
  print("# slowest call: " + std::string(slowest));
  print("# " + std::to_string(passed_.size()) + " ok, " + std::to_string(failed_) + " failed, " +
        std::to_string(skipped_) + " not run, " + std::to_string(refusals_) + " refused");
  return failed_ == 0;
}

}  // namespace compliance
