// The list of a fusion device's children.
#pragma once

#include <velq/velq.h>

#include <array>
#include <string>

/// Up to 256 device numbers, in the library's order.
struct FusionChildren {
  static constexpr int32_t Capacity = 256;

  /// Fills the list; anything but success means that it cannot be had.
  Automation::Velq::ErrorCode read(int32_t fusionNumber);

  /// The children's descriptions, separated by blanks; those that cannot be opened are left out.
  std::wstring report() const;

  int32_t count = Capacity;
  std::array<int32_t, Capacity> numbers;
};
