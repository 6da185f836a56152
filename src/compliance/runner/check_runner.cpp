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

// Standard output is flushed, for the lines are to be there whatever happens next.
void print(const std::string& line) {
  if (printf("%s\n", text::oneLine(line).c_str()) < 0 || std::fflush(stdout) != 0)
    throw std::system_error(errno, std::generic_category(), "standard output");
}

std::string counted(const std::string& first, unsigned count) {
  return count == 1 ? first : first + " (and " + std::to_string(count - 1) + " more)";
}

}  // namespace

CheckRunner::CheckRunner(const std::string& path, std::chrono::seconds limit)
    : path_(path), limit_(limit), report_(sharedReport()) {
  // Without a line for the version, which prove(1) takes up to 13 only.
  print("1.." + std::to_string(std::size(AllChecks) + 1));
}

CheckRunner::~CheckRunner() { munmap(&report_, sizeof report_); }

void CheckRunner::run(const Check& check) {
  const std::string need = unmetNeed(check);
  if (need.empty())
    report(check.name, runOne(check));
  else
    skip(check, need);
}

void CheckRunner::skip(const Check& check, const std::string& reason) {
  ++skipped_;
  print(numbered("ok", check.name) + " # SKIP " + reason);
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

Verdict CheckRunner::runOne(const Check& check) {
  report_ = Report();
  const auto status = runInProcess([&] { perform(check, path_, report_, firstLook_, endsBadly_); }, output_, limit_);
  if (!report_.layer.isEmpty() && passed_.empty() && failed_ == 0) print("# through " + report_.layer.get());
  noteDisturbance();
  return {findingOf(status), counted(report_.refusal.get(), report_.refusals), report_.refusals};
}

void CheckRunner::noteDisturbance() {
  if (!disturbance_.empty()) return;
  disturbance_ = report_.disturbance.get();
  if (disturbance_.empty() && !output_.text().empty()) disturbance_ = "writes to standard output";
}

// A check that did not come to its end failed, however the process ended.
std::string CheckRunner::findingOf(std::optional<int> status) {
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
  print("# " + std::to_string(passed_.size()) + " ok, " + std::to_string(failed_) + " failed, " +
        std::to_string(skipped_) + " not run, " + std::to_string(refusals_) + " refused");
  return failed_ == 0;
}

}  // namespace compliance
