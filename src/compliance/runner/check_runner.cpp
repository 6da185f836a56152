#include "compliance/runner/check_runner.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "text/one_line.h"

namespace compliance {

namespace {

constexpr size_t MostTimeouts = 3;

constexpr const char* ProcessCheck = "process-left-alone";

Report& sharedReport() {
  void* const memory = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  return *static_cast<Report*>(memory);
}

// Within the process of the check.
void perform(const Check& check, const std::string& path, Report& report, const SharedFile& firstLook,
             bool endsQuietly) {
  Findings findings(report);
  Library library(path, report);
  try {
    const NextProcess next([&] { library.load(); });
    if (*check.needs != 0) library.load();
    check.run({library, next, firstLook}, findings);
  } catch (const std::exception& error) {
    findings.expect(false, error.what(), "in the checker");
  }
  report.isFinished = true;
  if (endsQuietly) _exit(0);
  report.operation.set("exit()");
}

std::string endingOf(int status) {
  if (WIFSIGNALED(status)) return std::string("ends the process with SIG") + sigabbrev_np(WTERMSIG(status));
  return "ends the process with status " + std::to_string(WEXITSTATUS(status));
}

std::string counted(const std::string& first, unsigned count) {
  return count == 1 ? first : first + " (and " + std::to_string(count - 1) + " more)";
}

}  // namespace

CheckRunner::CheckRunner(const std::string& path, std::chrono::seconds limit)
    : path_(path), limit_(limit), report_(sharedReport()) {}

CheckRunner::~CheckRunner() { munmap(&report_, sizeof report_); }

void CheckRunner::run(const Check& check) {
  const std::string need = unmetNeed(check);
  if (need.empty())
    runOne(check);
  else
    skip(check, need);
}

void CheckRunner::skip(const Check& check, const std::string& reason) {
  ++left_;
  say("--  ", check.name + (": not run, " + reason));
}

std::string CheckRunner::unmetNeed(const Check& check) const {
  if (timeouts_ >= MostTimeouts) return std::to_string(timeouts_) + " checks have run out of time";
  std::istringstream needs(check.needs);
  for (std::string need; needs >> need;) {
    if (need == "*" && failed_ > 0) return "needs all checks before it";
    if (need != "*" && !passed_.contains(need)) return "needs " + need;
  }
  return "";
}

void CheckRunner::runOne(const Check& check) {
  report_ = Report();
  const auto status = runInProcess([&] { perform(check, path_, report_, firstLook_, endsBadly_); }, output_, limit_);
  const std::string failure = failureOf(status);
  if (!report_.layer.isEmpty() && passed_.empty() && failed_ == 0) say("through", report_.layer.get());
  if (disturbance_.empty()) {
    disturbance_ = report_.disturbance.get();
    if (disturbance_.empty() && !output_.text().empty()) disturbance_ = "writes to standard output";
  }
  reportResult(check.name, failure);
}

// What stands behind FAIL; empty when the check has passed. A check that did not come to its end failed, however the
// process ended.
std::string CheckRunner::failureOf(std::optional<int> status) {
  const std::string operation =
      report_.operation.isEmpty() ? "the reading of what it returned" : report_.operation.get();
  const std::string during = " during " + operation;
  if (!status) {
    ++timeouts_;
    return "is not done within " + std::to_string(limit_.count()) + " s," + during;
  }
  if (!report_.thrown.isEmpty()) return "lets an exception out" + during + ": " + report_.thrown.get();
  if (!report_.isFinished) return endingOf(*status) + during;
  if (report_.findings > 0) return counted(report_.finding.get(), report_.findings);
  if (*status == 0) return "";
  endsBadly_ = true;
  return endingOf(*status) + during;
}

void CheckRunner::reportResult(const char* name, const std::string& failure) {
  if (failure.empty()) {
    passed_.insert(name);
    refusals_ += report_.refusals;
    const std::string refused = counted(report_.refusal.get(), report_.refusals);
    say("ok  ", report_.refusals == 0 ? name : name + (": refused, not tried: " + refused));
  } else {
    ++failed_;
    say("FAIL", name + (": " + failure));
  }
}

bool CheckRunner::finish() {
  report_ = Report();
  reportResult(ProcessCheck, disturbance_);
  say(std::to_string(passed_.size()).c_str(), "ok, " + std::to_string(failed_) + " failed, " + std::to_string(left_) +
                                                  " not run, " + std::to_string(refusals_) + " refused");
  return failed_ == 0;
}

void CheckRunner::say(const char* verdict, const std::string& line) {
  if (printf("%s %s\n", verdict, text::oneLine(line).c_str()) < 0 || std::fflush(stdout) != 0)
    throw std::system_error(errno, std::generic_category(), "standard output");
}

}  // namespace compliance
