// A check: one promise of <velq/operations.def>, tried on all devices that the library lists.
#pragma once

#include <span>

#include "compliance/findings.h"
#include "compliance/library.h"
#include "compliance/snapshot.h"

namespace compliance {

/// What there is to check.
struct Bench {
  const Library& library;
  Snapshot before;  ///< all that could be read before the first check that reads devices
};

struct Check {
  const char* name;
  void (*run)(const Bench& bench, Findings& findings);
};

using Checks = std::span<const Check>;

// The file, and the tables, without which nothing else can be tried.
extern const Checks SymbolChecks;
extern const Checks TableChecks;

// What only reads, `SnapshotChecks` last.
extern const Checks DeviceChecks;
extern const Checks TextChecks;
extern const Checks ArrayChecks;
extern const Checks FusionChecks;
extern const Checks ControlChecks;
extern const Checks ScenarioChecks;
extern const Checks SnapshotChecks;

// What changes devices and puts them back; `FusionWriteChecks` ends with a look at whether all is as it was.
extern const Checks WriteChecks;
extern const Checks FusionWriteChecks;

}  // namespace compliance
