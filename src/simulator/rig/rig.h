// The rig: the installed devices, as its file gives them. What commands change is in the state.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/rig/device.h"
#include "simulator/rig/json_fields.h"

namespace simulator {

/// The devices in order of their numbers, which are distinct. Children are listed, are no fusion devices, belong to one
/// group and share one product id.
struct Rig {
  std::vector<Device> devices;

  /// The device with this number; null when there is none.
  const Device* find(int32_t number) const;

  /// Whether a device with this number is listed and is no fusion device.
  bool hasBoard(int32_t number) const;
};

/// Reads a rig file. Throws RigError.
Rig readRigFile(const std::string& path);

/// The rig that is built into the library.
Rig readBuiltInRig();

}  // namespace simulator
