// Restoring what checks change, when one of them could not do it itself.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "compliance/devices/snapshot.h"

namespace compliance {

/// Whether a fact is a description, a board id, the children of a device or the order of the list, which checks change
/// and can restore.
bool isRestorable(const std::string& fact);

/// Such a fact that is not as before.
struct Alteration {
  bool isLeft = false;  ///< after all was restored; before that otherwise
  Difference difference;
};

/// Restores the descriptions, board ids and groups of `before`. Passes a line for each alteration to `report`: before
/// anything is restored, and again for what is left; then an empty line.
void restoreDevices(const Snapshot& before, const std::function<void(const std::string& line)>& report);

/// The alteration in a line; nothing in any other line.
std::optional<Alteration> alterationIn(const std::string& line);

}  // namespace compliance
