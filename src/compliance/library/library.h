// The device library under test: its file, and its tables once it is loaded.
#pragma once

#include <velq/library.h>

#include <string>
#include <vector>

#include "compliance/process/report.h"

namespace compliance {

/// Throws std::runtime_error when the file is no readable shared library.
void expectSharedLibrary(const std::string& path);

/// The names that the file defines for others, in its order. Throws std::runtime_error when it has none that can be
/// read.
std::vector<std::string> exportedSymbols(const std::string& path);

/// A library that is loaded until the process ends. One that is before it in the order of the loader, such as a
/// preloaded probe, is called in its place. There is one in a process.
class Library {
 public:
  /// The one symbol that a library exports.
  static constexpr const char* Entry = "CvxQuellisLibInitialize";

  /// Loads nothing yet. `report` hears of every call.
  Library(const std::string& path, Report& report);

  /// Loads the file and fetches its tables, which may be incomplete. Throws std::runtime_error with the message of the
  /// loader, also when there is no entry in the file.
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
