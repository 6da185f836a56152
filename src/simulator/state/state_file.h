// The file of the state, and byte locks in it that hold devices.
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

#include "base/descriptor.h"

namespace simulator {

/// A state that cannot be used. what() says why, without the file's name; strings of the state are in it unchanged.
struct StateError : std::runtime_error {
  using std::runtime_error::runtime_error;
  /// Ends what() where the system refuses the file.
  static constexpr const char* Advice = "; name another file with VELQ_STATE or velq-sim --state";
};

/// The place of the file. The path is empty when the environment names no place; every change is refused then.
struct StatePlace {
  std::string path;
  bool makesDirectories;  ///< whether missing directories of the path are created with the file
};

/// One file. Deleting it while this object lives loses the holds.
class StateFile {
 public:
  /// Opens and creates nothing yet.
  explicit StateFile(StatePlace place) : place_(std::move(place)) {}

  /// As given.
  const std::string& path() const { return place_.path; }

  /// Whether the file exists. Throws StateError when it is not a regular file; symbolic links are not followed.
  bool exists() const;

  /// Creates an empty file that only its user can read, unless it exists. New directories are synced; the file itself
  /// is with the first commit. Throws StateError.
  void create() const;

  /// The path with the symbolic links of its directory resolved. Throws StateError.
  std::string resolvedPath() const;

  /// Holds a device against all other processes until `release` has been called as often, or this process ends in any
  /// way. Creates the file if needed. Returns false when another process holds the device. Throws StateError.
  bool hold(int32_t device);

  /// Reverts one `hold` that returned true.
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
