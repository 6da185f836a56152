// The rig: the installed devices as in its file. What commands change is in the state.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "simulator/rig/device.h"
#include "simulator/rig/json_fields.h"

namespace simulator {

/// The devices in the order of the file. Their numbers are distinct. Children are listed, are no fusion devices, belong
/// to one group and share one product id.
struct Rig {
  std::vector<Device> devices;
  std::unordered_map<int32_t, size_t> positions;  ///< in `devices`, by number

  /// The device with this number; null when there is none.
  const Device* find(int32_t number) const;

  /// Whether a device with this number is listed and is no fusion device.
  bool hasBoard(int32_t number) const;
};

/// Reads the JSON of a rig. Throws RigError.
Rig readRig(std::string_view text);

/// Reads a rig file. Throws RigError.
Rig readRigFile(const std::string& path);

/// The rig that is built into the library.
Rig readBuiltInRig();

}  // namespace simulator
