// What the process of a check reports to the checker, in memory that both share: so it remains when that process ends.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace compliance {

/// A string of bounded length without a pointer in it, so that no change that a library makes to it can lead astray.
template <size_t Room>
class SharedText {
 public:
  void set(std::string_view text) { text_[text.copy(text_, Room - 1)] = 0; }
  std::string get() const { return std::string(text_, std::find(text_, text_ + Room, '\0')); }
  bool isEmpty() const { return text_[0] == 0; }

 private:
  char text_[Room] = {};
};

/// Empty at the beginning of a check. Several processes may write to it.
struct Report {
  pid_t process = 0;         ///< that does the work
  SharedText<64> operation;  ///< what is being called, or was called last
  bool isCalling = false;
  SharedText<64> change;  ///< the last call that changes devices
  std::atomic<uint64_t> calls = 0;
  std::atomic<int64_t> slowest = 0;  ///< duration of the slowest call, in nanoseconds
  SharedText<64> slowestOperation;
  bool isFinished = false;  ///< the check has run to its end
  unsigned findings = 0;
  unsigned refusals = 0;
  SharedText<2000> finding;     ///< the first
  SharedText<500> refusal;      ///< the first
  SharedText<500> thrown;       ///< the type of an exception that `operation` let out, and its message
  SharedText<200> disturbance;  ///< of the process: what was done, and during which call
  SharedText<4096> layer;       ///< the file that answers, where it is not the library's
};

/// What a check finds at a place. The first of each kind is saved, and the number of all.
class Findings {
 public:
  explicit Findings(Report& report, std::string where = "") : report_(report), where_(std::move(where)) {}

  /// At a place within this one.
  Findings at(const std::string& place) const {
    return Findings(report_, where_.empty() ? place : where_ + ", " + place);
  }

  const std::string& where() const { return where_; }

  /// Notes that `what` was found unless the promise holds. Returns `holds`.
  bool expect(bool holds, const std::string& what) const {
    if (!holds && report_.findings++ == 0) report_.finding.set(what + ", " + where_);
    return holds;
  }

  /// Notes that the library refuses what was to be tried, as it may.
  void refuse() const {
    if (report_.refusals++ == 0) report_.refusal.set(where_);
  }

 private:
  Report& report_;
  std::string where_;
};

}  // namespace compliance
