// What a library finds in its process and leaves as it is.
#pragma once

#include <string>
#include <vector>

namespace compliance {

/// The state of a process that belongs to the tool, apart from standard output.
class Surroundings {
 public:
  /// As it is now. Standard input becomes a file, in which it shows whether anything was read; copies of it take the
  /// lowest descriptors that are free, so that a library does not get those.
  Surroundings();

  /// What has happened to it since, such as "changes the umask"; empty when nothing has.
  std::string disturbance() const;

 private:
  std::vector<size_t> before_;
};

}  // namespace compliance
