// Reading one device of a rig.
#pragma once

#include "simulator/json_fields.h"
#include "simulator/rig.h"

namespace simulator {

/// Reads a device, its texts kept in `texts`; whether its children exist is left to the caller. Throws RigError.
Device readDevice(const JsonValue& value, RigTexts& texts);

}  // namespace simulator
