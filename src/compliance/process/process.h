// Processes that a library may end, hang or spoil as it likes.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace compliance {

/// A file in memory, for what one process writes and another reads.
class SharedFile {
 public:
  /// Throws std::system_error, as do the others.
  SharedFile();
  ~SharedFile();
  SharedFile(const SharedFile&) = delete;
  SharedFile& operator=(const SharedFile&) = delete;

  int descriptor() const { return descriptor_; }
  void clear() const;
  void append(const std::string& text) const;
  std::string text() const;

 private:
  int descriptor_;
};

/// Runs `work` in a new process, which then ends as programs end, destructors of the library included. Its standard
/// input is empty, its standard output is `output`. Returns its status as of waitpid(); nothing when it was killed
/// after `limit`. Whatever it has left behind is killed.
std::optional<int> runInProcess(const std::function<void()>& work, const SharedFile& output,
                                std::chrono::seconds limit);

}  // namespace compliance
