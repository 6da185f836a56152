// Work in processes that a library may end, hang, spoil or multiply as it likes.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "compliance/process/ending.h"
#include "compliance/process/signals.h"

namespace compliance {

/// Runs work in processes, one at a time. There is one in a program, which it protects from signals.
class Supervisor {
 public:
  /// A call may take `limit`, and so may what the work does between two calls. `report` is shared memory. Throws
  /// std::system_error.
  Supervisor(std::chrono::seconds limit, Report& report);

  /// Runs `work` in a new process and clears the report before. Its standard input is empty, its standard error appears
  /// on that of this process, up to a limit. All processes that it started have ended afterwards. `name` is shown to
  /// users on a terminal that have to wait. A signal of the user ends the work if `endsBySignal`. Throws
  /// std::system_error.
  Ending run(const std::string& name, const std::function<void()>& work, bool endsBySignal = true);

 private:
  class Run;

  const std::chrono::seconds limit_;
  Report& report_;
  const Signals signals_;
};

}  // namespace compliance
