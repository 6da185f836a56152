// The list of a fusion device's children.
#pragma once

#include <velq/velq.h>

#include <array>
#include <optional>
#include <string>

/// Device numbers in the library's order.
struct FusionChildren {
  int32_t count;                                                        ///< of entries filled; at most all of them
  std::array<int32_t, Automation::Velq::MostFusionChildren> numbers{};  ///< -1 where the library filled nothing
};

/// The children of a fusion device; nothing when the library does not list them.
std::optional<FusionChildren> childrenOf(int32_t fusionNumber);

/// The children's descriptions, separated by spaces; those that cannot be opened are left out. The devices that are
/// opened for it are never released.
std::wstring describe(const FusionChildren& children);
