// Tables that note what is being called and forward it to the library's.
#pragma once

#include <velq/library.h>

#include <chrono>

#include "compliance/process/report.h"

namespace compliance {

/// Notes in the report that `name` is being called; at the end of the call, also how long it took, and what the library
/// has done to the process meanwhile that is not its business.
class Call {
 public:
  Call(const char* name, Report& report) : name_(name), report_(report) {
    report.operation.set(name);
    report.isCalling = true;
  }
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  const char* name_;
  Report& report_;
  const Clock::time_point begin_ = Clock::now();
};

/// Calls `operation` under its name. An exception that it lets out is noted and ends the process.
template <typename Operation>
auto callWatched(const char* name, Report& report, const Operation& operation);

/// Notes from now on what is done to the process; to be called before the library is loaded.
void watchProcess();

/// Lets this program catch what a library throws that has a C++ runtime of its own: the unwinder of this one sets
/// itself up with the first exception that it raises, and would abort without.
void prepareToCatch();

/// Watches these tables from now on, which have to be complete, and reports to `report`.
void watch(const Automation::Velq::LibraryTable* tables, Report& report);

/// The tables to call in place of those that are watched.
const Automation::Velq::LibraryTable* watchedTables();

/// Notes the exception that is being handled, and ends the process.
[[noreturn]] void endWithException(Report& report);

template <typename Operation>
auto callWatched(const char* name, Report& report, const Operation& operation) {
  try {
    const Call call(name, report);
    return operation();
  } catch (...) {
    report.isCalling = true;
    endWithException(report);
  }
}

}  // namespace compliance
