// VELQ_TRACE=FILE: one line a call, appended as a whole, so that several processes can share a file.
#pragma once

#include <string>
#include <string_view>

#include "base/descriptor.h"

namespace probe {

/// Writes all bytes; a failure raises no signal. Returns 0 or errno. Safe in a signal handler.
int writeWithoutSignal(int descriptor, std::string_view bytes);

/// The file. It never ends the process that it traces: when it cannot be opened or written, a line on standard error
/// says why, and no more calls are traced.
class TraceFile {
 public:
  /// Opens or creates the file. With an empty path no call is traced.
  explicit TraceFile(const std::string& path);

  bool isOpen() const { return file_.isOpen(); }

  /// Of an open file; 3 or above.
  int descriptor() const { return file_.number(); }

  /// Appends `line` and a line end to an open file.
  void write(std::string line);

 private:
  void giveUp(std::string_view problem, int error);

  std::string path_;
  base::Descriptor file_;
};

}  // namespace probe
