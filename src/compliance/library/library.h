// The device library under test.
#pragma once

#include <velq/library.h>

#include <string>

#include "compliance/process/report.h"

namespace compliance {

/// A library that is loaded until the process ends. One that is before it in the order of the loader, such as a
/// preloaded probe, is called in its place. There is one in a process. An exception that a call through <velq/velq.h>
/// lets out ends the process.
class Library {
 public:
  /// The one symbol that a library exports.
  static constexpr const char* Entry = "CvxQuellisLibInitialize";

  /// Loads nothing yet. Every call is noted in `report`, which lives until the process ends.
  Library(const std::string& path, Report& report);

  /// Loads the file and gets its tables, which may be incomplete. Throws std::runtime_error with the message of the
  /// loader, also when there is no entry in the file.
  void load();

  const std::string& path() const { return path_; }

  /// What the entry returned.
  const Automation::Velq::LibraryTable* tables() const;

 private:
  std::string path_;
};

}  // namespace compliance
