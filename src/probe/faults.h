// VELQ_FAULTS='OPERATION[#FIRST[-LAST]]=ANSWER; ...': calls that return ANSWER and do not reach the library.
#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "probe/operation.h"

namespace probe {

/// One entry of the list.
struct Fault {
  std::string text;  ///< the entry in the list
  Operation operation;
  uint64_t first = 1;  ///< counted from 1
  uint64_t last = UINT64_MAX;
  uint32_t answer = 0;  ///< a status or a number; 0 for null
  bool reached = false;
};

/// The list, and which of its faults calls have reached.
class Faults {
 public:
  /// Reads a list of faults; stops the process at an entry that is unknown or malformed.
  explicit Faults(std::string_view list);

  /// The fault for the next call of `operation`, null when that call is to be forwarded. Counts the call.
  const Fault* next(Operation operation);

  bool isEmpty() const { return faults_.empty(); }

  /// A line, its end included, with the number of faults that no call has reached, and their entries.
  struct Report {
    std::string line;
    bool allReached;
  };

  /// The current report. Safe in a signal handler: the line was created when the last fault was reached.
  const Report& report() const { return *report_; }

 private:
  void prepareReport();

  std::vector<Fault> faults_;
  std::list<Report> reports_;  ///< the earlier ones, too: a signal may come while one is replaced
  std::atomic<const Report*> report_ = nullptr;
  uint64_t calls_[OperationCount] = {};
};

}  // namespace probe
