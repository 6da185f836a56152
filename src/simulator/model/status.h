// Statuses of the simulator's own, beside those of <velq/types.h>, and its way of speaking to the user.
#pragma once

#include <velq/types.h>

#include <string>

namespace simulator {

using Automation::Velq::ErrorCode;

inline constexpr ErrorCode WarningTextCut{0xA0000001};     ///< the text did not fit and was cut
inline constexpr ErrorCode ErrorNotGiven{0xE0000001};      ///< the rig does not give this item
inline constexpr ErrorCode ErrorNoSuchDevice{0xE0000002};  ///< no such device, or it is gone by now
inline constexpr ErrorCode ErrorRefused{0xE0000003};       ///< the value is not acceptable for this device
inline constexpr ErrorCode ErrorNotSaved{0xE0000004};      ///< the state could not be written; nothing has changed
inline constexpr ErrorCode ErrorWrongOrder{0xE0000005};    ///< something else must be done first

/// Writes "velq-sim: " and `message` as one line to standard error, once for each different message.
void report(const std::string& message);

}  // namespace simulator
