// Restoring what checks change, when one of them could not do it itself.
#pragma once

#include "compliance/devices/snapshot.h"

namespace compliance {

/// What has changed since `before` of that which checks change and can restore: descriptions, board ids, the children
/// of devices, and the order of the list.
std::map<std::string, Difference> alterations(const Snapshot& before, const Snapshot& now);

/// Restores the descriptions, board ids and groups of `before` as far as the library lets it.
void restoreDevices(const Snapshot& before);

}  // namespace compliance
