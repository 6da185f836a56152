// Tables that note what is being called and forward it to the library's.
#pragma once

#include <velq/library.h>

#include <chrono>

#include "compliance/process/report.h"

namespace compliance {

/// Notes from now on in `report` what is called and what is done to the process; to be called before the library is
/// loaded. From now on this program can also catch what a library throws that has a C++ runtime of its own.
void startWatching(Report& report);

/// Notes that `name` is being called; at the end of the call, also how long it took, and what the library has done to
/// the process meanwhile that is not its business.
class Call {
 public:
  explicit Call(const char* name);
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

 private:
  using Clock = std::chrono::steady_clock;

  const char* name_;
  const Clock::time_point begin_ = Clock::now();
};

/// Notes the exception that is being handled, and ends the process.
[[noreturn]] void endWithException();

/// Calls `operation` under its name. An exception that it lets out is noted and ends the process.
template <typename Operation>
auto callWatched(const char* name, const Operation& operation) {
  try {
    const Call call(name);
    return operation();
  } catch (...) {
    endWithException();
  }
}

/// Watches these tables from now on, which have to be complete.
void watch(const Automation::Velq::LibraryTable* tables);

/// The tables to call in place of those that are watched.
const Automation::Velq::LibraryTable* watchedTables();

}  // namespace compliance
