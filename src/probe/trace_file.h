// VELQ_TRACE=FILE: one line a call, appended as a whole, so that several processes can share a file.
#pragma once

#include <string>
#include <string_view>

namespace probe {

/// Writes all of `bytes`, with no signal raised where that fails. Gives 0 or the error. Fit for a signal handler.
int writeAll(int descriptor, std::string_view bytes);

/// A file that never ends what it watches: where it cannot be opened or written, a line on standard error says why, and
/// nothing more is traced.
class TraceFile {
 public:
  /// Opens or makes the file. An empty path traces nothing.
  explicit TraceFile(const std::string& path);
  ~TraceFile();
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }

  /// Open, 3 or above; -1 when nothing is traced.
  int descriptor() const { return descriptor_; }

  /// Appends `line` and a line end.
  void write(std::string line);

 private:
  void giveUp(std::string_view problem, int error);

  std::string path_;
  int descriptor_ = -1;
};

}  // namespace probe
