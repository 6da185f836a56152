#include "compliance/runner/check_runner.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdio>
#include <new>
#include <sstream>
#include <system_error>

#include "base/descriptor.h"
#include "compliance/checks/check.h"
#include "compliance/devices/restoration.h"
#include "compliance/process/supervisor.h"
#include "text/one_line.h"

namespace compliance {

namespace {

// Each hang costs the whole limit, and a library that hangs three times will hang again.
constexpr size_t MostHangs = 3;

// Shared with all processes that are forked.
Report& sharedReport() {
  void* const memory = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  return *new (memory) Report;
}

// Within the process of the check. The server of the next processes starts first: it must not have the library loaded.
void performHere(const Check& check, const std::string& path, Report& report, const Snapshot& before) {
  const Findings findings(report);
  Library library(path, report);
  try {
    const NextProcess next([&] { library.load(); });
    if (*check.needs != 0) library.load();
    check.run({library, next, before, findings});
  } catch (const std::exception& error) {
    const bool isOurs = dynamic_cast<const std::system_error*>(&error) != nullptr;
    findings.at(isOurs ? "in the checker" : "which ends the check").expect(false, error.what());
  }
  report.isFinished = true;
  report.operation.set("exit()");
  report.isCalling = true;
}

// Flushes, so that the line is there if this process is ended.
void print(const std::string& line) {
  if (printf("%s\n", text::oneLine(line).c_str()) < 0 || std::fflush(stdout) != 0)
    throw std::system_error(errno, std::generic_category(), "standard output");
}

class CheckRunner {
 public:
  CheckRunner(const std::string& path, std::chrono::seconds limit, bool writes)
      : path_(path), writes_(writes), report_(sharedReport()), supervisor_(limit, report_) {}

  int runAll() {
    // Without a line for the version, which prove(1) takes up to 13 only.
    print("1.." + std::to_string(std::size(AllChecks) + 1));
    for (const Check& check : AllChecks) {
      const std::string need = unmetNeed(check);
      if (need.empty())
        run(check);
      else
        print("ok " + std::to_string(++count_) + " - " + check.name + " # SKIP " + need);
      if (interruption_ != 0) return 128 + interruption_;
    }
    report("process-left-alone", disturbance_);
    char slowest[100];
    std::snprintf(slowest, sizeof slowest, "%.3f s, ", static_cast<double>(slowest_.first) / 1e9);
    print("# slowest call: " + (slowest + slowest_.second));
    print("# " + std::to_string(passed_.size()) + " ok, " + std::to_string(failed_) + " failed, " +
          std::to_string(count_ - passed_.size() - failed_) + " not run, " + std::to_string(refusals_) + " refused");
    return failed_ == 0 ? 0 : 1;
  }

 private:
  std::string unmetNeed(const Check& check) const {
    const bool writes = check.access == CheckAccess::Writes;
    if (writes && !writes_) return "needs --write";
    if (writes && isAltered_) return "devices are not restored";
    if (hangs_ >= MostHangs) return "calls of " + std::to_string(hangs_) + " checks have not returned";
    std::istringstream needs(check.needs);
    for (std::string need; needs >> need;) {
      if (need == "*" && failed_ > 0) return "needs all checks before it";
      if (need != "*" && !passed_.contains(need)) return "needs " + need;
    }
    return "";
  }

  void run(const Check& check) {
    std::string finding = perform(check);
    const unsigned refusals = report_.refusals;
    const std::string refused = counted(report_.refusal.get(), refusals);
    const bool writes = check.access == CheckAccess::Writes;
    const Ending after = writes ? look() : Ending();
    // The check has looked before it disposed of its handles and ended.
    if (writes && finding.empty()) finding = lossIn(after);
    if (interruption_ == 0 && report(check.name, finding) && refusals > 0) {
      refusals_ += refusals;
      print("# refused, not tried: " + refused);
    }
    if (writes && !passed_.contains(check.name)) restore(after);
    if (interruption_ != 0) print("Bail out! Ended by the user");
  }

  // Returns what was found.
  std::string perform(const Check& check) {
    const Ending ending = supervisor_.run(check.name, [&] { performHere(check, path_, report_, before_); });
    // Once, for it is the same in every process.
    if (!report_.layer.isEmpty() && count_ == 0) print("# through " + report_.layer.get());
    interruption_ = ending.interruption;
    hangs_ += ending.isHung;
    if (disturbance_.empty()) disturbance_ = disturbanceIn(ending, report_);
    slowest_ = std::max(slowest_, {report_.slowest, report_.slowestOperation.get()});
    if (check.run == lookFirst) before_ = snapshotOf(ending.result);
    return findingOf(ending, report_);
  }

  // Returns whether the check has passed.
  bool report(const std::string& name, const std::string& finding) {
    const bool isGood = finding.empty();
    print((isGood ? "ok " : "not ok ") + std::to_string(++count_) + " - " + name);
    if (!isGood) print("# " + finding);
    failed_ += !isGood;
    if (isGood) passed_.insert(name);
    return isGood;
  }

  // In a process of its own that has loaded the library.
  Ending runLoaded(const std::function<void()>& work) {
    // To its end, for a user, or timeout(1), may send more than one signal.
    const auto loaded = [&] {
      Library(path_, report_).load();
      work();
    };
    const Ending ending = supervisor_.run("restoring", loaded, /*endsBySignal=*/false);
    if (interruption_ == 0) interruption_ = ending.interruption;
    return ending;
  }

  // All that can be read; an empty result where the process has ended early.
  Ending look() {
    return runLoaded([this] { report_.isFinished = base::writeAll(ResultDescriptor, textOf(takeSnapshot())); });
  }

  // What such a look, after a check that writes, shows to be otherwise than before; empty when nothing is.
  std::string lossIn(const Ending& look) {
    expectSame(before_, snapshotOf(look.result), Findings(report_, "after the process has ended"));
    return findingOf(look, report_);
  }

  void restore(const Ending& first) {
    runLoaded([this] { restoreDevices(before_); });
    const Ending last = look();
    const bool isKnown = !last.result.empty();
    const auto left = alterations(before_, snapshotOf((isKnown ? last : first).result));
    isAltered_ = isAltered_ || !isKnown || !left.empty();
    if (!isKnown) print("# NOT RESTORED: the library " + findingOf(last, report_));
    for (const auto& [fact, values] : left)
      print("# NOT RESTORED: " + fact + " is " + values.found + ", was " + values.wanted);
    if (first.result.empty()) return;
    for (const auto& [fact, values] : alterations(before_, snapshotOf(first.result)))
      if (!left.contains(fact)) print("# restored: " + fact + " " + values.wanted + ", was left at " + values.found);
  }

  const std::string path_;
  const bool writes_;
  Report& report_;
  Supervisor supervisor_;
  Snapshot before_;
  std::set<std::string> passed_;
  std::string disturbance_;                  // the first of any check
  std::pair<int64_t, std::string> slowest_;  // the duration of a call in nanoseconds, and its operation
  size_t count_ = 0;                         // of all checks that were reported, also those that were not run
  size_t failed_ = 0;
  size_t refusals_ = 0;
  size_t hangs_ = 0;
  int interruption_ = 0;
  bool isAltered_ = false;  // devices could not be restored
};

}  // namespace

int runChecks(const std::string& path, std::chrono::seconds limit, bool writes) {
  return CheckRunner(path, limit, writes).runAll();
}

}  // namespace compliance
