// The file that the state is in, and the holds on devices that its byte locks are.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

#include "base/descriptor.h"
#include "simulator/state/state_file.h"

namespace simulator {

/// A state that cannot be used. what() says why, without the file's name; what the state holds stands in it as it is.
struct StateError : std::runtime_error {
  using std::runtime_error::runtime_error;
  /// Ends what() where the system refuses the file.
  static constexpr const char* Advice = "; name another file with VELQ_STATE or velq-sim --state";
};

/// Where the file is to be. An empty path stands for a place that cannot be found out; every change is refused then.
struct StatePlace {
  std::string path;
  bool makesFolders;  ///< whether the folders that lead to it are made with it
};

/// One file. Deleting it while this object lives loses the holds.
class StateFile {
 public:
  /// Opens and makes nothing yet.
  explicit StateFile(StatePlace place) : place_(std::move(place)) {}

  /// As given.
  const std::string& path() const { return place_.path; }

  /// Whether there is a file. Throws StateError when what is there is no regular file; symbolic links are not followed.
  bool exists() const;

  /// Makes an empty file that only its user can read, unless there is one. What leads to it lasts; the file itself does
  /// with the first sync of its folder. Throws StateError.
  void create() const;

  /// The path with the symbolic links of its folder resolved. Throws StateError.
  std::string resolvedPath() const;

  /// Holds a device against all other processes until as many calls of `release`, or the end of this process, however
  /// it ends. Makes the file when there is none. Returns false when another process holds the device. Throws
  /// StateError.
  bool hold(int32_t device);

  /// Takes back one `hold`.
  void release(int32_t device);

  /// Whether another process holds the device. Throws StateError.
  bool isHeldElsewhere(int32_t device);

 private:
  void openForLocks();

  StatePlace place_;
  base::Descriptor descriptor_;  ///< for the locks
  std::map<int32_t, int> holds_;
};

}  // namespace simulator
