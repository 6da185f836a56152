// Choosing a device by number or by description.
#pragma once

#include <cstdint>
#include <optional>

namespace simulator {

/// The number of the device that `number` names, 0 or above, or, with -1, the lowest one described `description`, which
/// may be null. Nothing when there is no such device. Takes in what other processes changed.
std::optional<int32_t> selectDevice(int32_t number, const wchar_t* description);

}  // namespace simulator
