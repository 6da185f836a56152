// The fusion devices and their children.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "simulator/rig/rig.h"
#include "simulator/state/state.h"

namespace simulator {

/// The memberships in rig and state when the object is created: a caller that changes a membership in the state creates
/// the groups again.
class Groups {
 public:
  Groups() = default;
  Groups(const Rig& rig, const StateContents& contents);

  /// The children of each fusion device: those that the rig lists in its order, each other one ahead of the first with
  /// a higher number.
  const std::map<int32_t, std::vector<int32_t>>& all() const { return groups_; }

  /// Whether this is the number of a fusion device.
  bool contains(int32_t number) const { return groups_.contains(number); }

  /// In the same order; empty when `number` is no fusion device.
  std::vector<int32_t> children(int32_t number) const;

  /// The fusion device that a device belongs to; nothing when to none.
  std::optional<int32_t> groupOf(int32_t number) const;

 private:
  std::map<int32_t, int32_t> groupOf_;
  std::map<int32_t, std::vector<int32_t>> groups_;  ///< never without children
};

}  // namespace simulator
