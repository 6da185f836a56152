// What a check found.
#pragma once

#include <string>

#include "compliance/process/report.h"

namespace compliance {

/// Saves the first of each kind and the number of all.
class Findings {
 public:
  explicit Findings(Report& report) : report_(report) {}

  /// Notes that `what` was found at `where` unless the promise holds. Returns `holds`.
  bool expect(bool holds, const std::string& what, const std::string& where) {
    if (!holds && report_.findings++ == 0) report_.finding.set(what + ", " + where);
    return holds;
  }

  /// Notes that the library refuses what was to be tried at `where`, as it may.
  void refuse(const std::string& where) {
    if (report_.refusals++ == 0) report_.refusal.set(where);
  }

 private:
  Report& report_;
};

}  // namespace compliance
