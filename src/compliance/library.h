// The device library under test.
#pragma once

#include <velq/library.h>

#include <string>

namespace compliance {

/// A library that is loaded until the process ends. What stands before it in the loader's order, as a preloaded probe
/// does, answers in its place. There is one in a process.
class Library {
 public:
  /// Loads the file. Throws std::runtime_error with what the loader says, also when there is no entry in it.
  explicit Library(const std::string& path);

  const std::string& path() const { return path_; }

  /// The file that answers: `path()`, or the layer over it.
  const std::string& answeringPath() const { return answeringPath_; }

  /// What the entry returned: the tables that all operations of <velq/binding.h> now go through.
  const Automation::Velq::LibraryTable* tables() const;

 private:
  std::string path_;
  std::string answeringPath_;
};

}  // namespace compliance
