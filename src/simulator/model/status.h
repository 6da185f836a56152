// The simulator's own statuses, besides those of <velq/types.h>, and its messages.
#pragma once

#include <velq/types.h>

#include <string>

namespace simulator {

using Automation::Velq::ErrorCode;

inline constexpr ErrorCode WarningTextCut{0xA0000001};     ///< the string did not fit and was cut
inline constexpr ErrorCode ErrorNotGiven{0xE0000001};      ///< the device has no such item in the rig
inline constexpr ErrorCode ErrorNoSuchDevice{0xE0000002};  ///< no such device, or no longer
inline constexpr ErrorCode ErrorRefused{0xE0000003};       ///< the value is not acceptable for this device
inline constexpr ErrorCode ErrorNotSaved{0xE0000004};      ///< the state could not be written; nothing has changed
inline constexpr ErrorCode ErrorWrongOrder{0xE0000005};    ///< something else must be done first

/// Writes "velq-sim: " and `message` as one line to standard error, once for each different message.
void report(const std::string& message);

}  // namespace simulator
