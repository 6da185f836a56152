// The items of a device that commands can change, and the names that states have for them.
#pragma once

#include <array>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/rig/device.h"

namespace simulator {

/// One item of any device.
struct Item {
  enum class Kind { BoardId, Calibration, Description, Firmware, Fusion };

  Kind kind;
  std::array<size_t, 3> position = {};  ///< the chip, or the solution, its section and the section's item; from 0

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the comparison of the result with 0 for one of pointers.
  auto operator<=>(const Item&) const = default;
};

inline constexpr Item BoardIdItem{Item::Kind::BoardId};
inline constexpr Item DescriptionItem{Item::Kind::Description};
inline constexpr Item FusionItem{Item::Kind::Fusion};  ///< the number of the device's fusion device, -1 for none

/// The version of a chip.
constexpr Item firmwareItem(size_t chip) { return {Item::Kind::Firmware, {chip}}; }

/// The code in use of one calibration item.
constexpr Item calibrationItem(size_t solution, size_t section, size_t item) {
  return {Item::Kind::Calibration, {solution, section, item}};
}

/// "board id", "calibration 0.1.2", "description", "firmware 0" or "fusion".
std::string nameOf(const Item& item);

/// The item with this name; nothing for any other string.
std::optional<Item> parseItem(std::string_view name);

/// Whether the device has the chip or the calibration item; true for all other items.
bool hasItem(const Device& device, const Item& item);

}  // namespace simulator
