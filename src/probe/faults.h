// VELQ_FAULTS='OPERATION[#FIRST[-LAST]]=ANSWER; ...': calls that answer by themselves instead of reaching the library.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "probe/operation.h"

namespace probe {

struct Fault {
  std::string text;  ///< as it was written
  Operation operation;
  uint64_t first = 1;  ///< counted from 1
  uint64_t last = UINT64_MAX;
  uint32_t answer = 0;  ///< a status or a number; 0 for null
  bool reached = false;
};

class Faults {
 public:
  /// Reads a list of faults; stops the process at an entry that is unknown or malformed.
  explicit Faults(std::string_view list);

  /// The fault for the next call of `operation`, null when that call is to be forwarded. Counts the call.
  const Fault* next(Operation operation);

  bool isEmpty() const { return faults_.empty(); }

  /// The faults that no call has reached, as they were written.
  std::vector<std::string> unreached() const;

 private:
  std::vector<Fault> faults_;
  uint64_t calls_[OperationCount] = {};
};

}  // namespace probe
