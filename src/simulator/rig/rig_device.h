// Reading one device of a rig.
#pragma once

#include "simulator/rig/device.h"
#include "simulator/rig/json_fields.h"

namespace simulator {

/// Reads a device; whether its children exist is left to the caller. Throws RigError.
Device readDevice(const JsonValue& value);

}  // namespace simulator
