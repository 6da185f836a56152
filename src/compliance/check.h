// A check: one promise of <velq/operations.def>, tried on all devices that the library lists.
#pragma once

#include <span>

#include "compliance/findings.h"
#include "compliance/library.h"
#include "compliance/next_process.h"
#include "compliance/process.h"

namespace compliance {

/// What there is to check.
struct Bench {
  Library& library;
  const NextProcess& next;
  const SharedFile& firstLook;  ///< for all that could be read before the other checks
};

/// Runs in a process of its own.
struct Check {
  const char* name;
  /// Names, with blanks between, of the checks that have to have passed; "*" for all that come before. One that needs
  /// nothing finds the library not loaded yet.
  const char* needs;
  void (*run)(const Bench& bench, Findings& findings);
};

using Checks = std::span<const Check>;

// In the order in which they are run. The file and the tables first, without which nothing else can be tried.
extern const Checks LibraryChecks;

// What only reads; `LifetimeChecks` last.
extern const Checks DeviceChecks;
extern const Checks TextChecks;
extern const Checks OpenChecks;
extern const Checks ArrayChecks;
extern const Checks FusionChecks;
extern const Checks ControlChecks;
extern const Checks ScenarioChecks;
extern const Checks LifetimeChecks;

// What changes devices and puts them back. They need the last of those that read.
extern const Checks DescriptionChecks;
extern const Checks BoardIdChecks;
extern const Checks GroupChecks;
extern const Checks SharingChecks;

}  // namespace compliance
