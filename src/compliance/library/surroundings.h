// What a library finds in its process and leaves as it is.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
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
  struct Aspect {
    std::string change;
    std::function<size_t()> read;
    size_t before;
  };

  void watch(const std::string& change, const std::function<size_t()>& read) {
    aspects_.push_back({change, read, read()});
  }

  std::vector<Aspect> aspects_;
};

}  // namespace compliance
