// What a library finds in its process and leaves as it is.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace compliance {

/// The state of a process that belongs to the tool, apart from standard output.
class Surroundings {
 public:
  /// As it is now. Standard input becomes a file, in which it shows whether anything was read.
  Surroundings();

  /// What has happened to it since, such as "changes the umask"; empty when nothing has.
  std::string disturbance() const;

 private:
  std::vector<std::pair<std::string, size_t>> before_;
};

}  // namespace compliance
