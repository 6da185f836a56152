// The device library under test.
#pragma once

#include <velq/library.h>

#include <string>

#include "compliance/process/report.h"

namespace compliance {

/// A library that is loaded until the process ends. What stands before it in the loader's order, as a preloaded probe
/// does, answers in its place. There is one in a process.
class Library {
 public:
  /// Loads nothing yet. `report` hears of every call.
  Library(const std::string& path, Report& report);

  /// Loads the file and fetches its tables, whatever is in them. Throws std::runtime_error with what the loader says,
  /// also when there is no entry in the file.
  void load();

  const std::string& path() const { return path_; }

  /// What the entry returned.
  const Automation::Velq::LibraryTable* tables() const { return tables_; }

 private:
  std::string path_;
  Report& report_;
  const Automation::Velq::LibraryTable* tables_ = nullptr;
};

}  // namespace compliance
