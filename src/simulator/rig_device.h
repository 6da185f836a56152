// Reading one device of a rig.
#pragma once

#include "simulator/json_fields.h"
#include "simulator/rig.h"

namespace simulator {

/// Reads a device, what it keeps put into `storage`; whether its children exist is left to the caller. Throws RigError.
Device readDevice(const JsonValue& value, RigStorage& storage);

}  // namespace simulator
