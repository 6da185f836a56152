#include "simulator/model/groups.h"

#include <algorithm>
#include <cassert>
#include <set>

namespace simulator {

// Memberships as in the rig, then as changed, then the lists in their order.
Groups::Groups(const Rig& rig, const StateContents& contents) {
  for (const Device& device : rig.devices) {
    if (!device.children) continue;
    for (const int32_t child : *device.children) groupOf_[child] = device.number;
  }
  for (const auto& [key, value] : contents) {
    // A state for another rig can have anything here; whether it fits is known only with the groups.
    const auto* const group = std::get_if<int64_t>(&value);
    if (key.second == FusionItem && group != nullptr) groupOf_[key.first] = static_cast<int32_t>(*group);
  }
  // -1: removed from its group.
  std::erase_if(groupOf_, [](const auto& entry) { return entry.second < 0; });
  // Children that the rig lists come first, in its order.
  std::set<int32_t> placed;
  for (const Device& device : rig.devices) {
    if (!device.children) continue;
    for (const int32_t child : *device.children) {
      if (groupOf(child) != device.number) continue;
      groups_[device.number].push_back(child);
      placed.insert(child);
    }
  }
  for (const auto& [child, group] : groupOf_) {
    if (placed.contains(child)) continue;
    std::vector<int32_t>& children = groups_[group];
    children.insert(
        std::find_if(children.begin(), children.end(), [added = child](int32_t other) { return other > added; }),
        child);
  }
}

std::vector<int32_t> Groups::children(int32_t number) const {
  const auto group = groups_.find(number);
  assert(group == groups_.end() || !group->second.empty());
  return group == groups_.end() ? std::vector<int32_t>() : group->second;
}

std::optional<int32_t> Groups::groupOf(int32_t number) const {
  const auto group = groupOf_.find(number);
  return group == groupOf_.end() ? std::nullopt : std::optional(group->second);
}

}  // namespace simulator
