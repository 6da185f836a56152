#include "simulator/model/state_check.h"

namespace simulator {

namespace {

// A fusion device of the rig, one that a command may create, or none.
bool isGroupNumber(const Rig& rig, int64_t number) {
  return number >= -1 && number <= INT32_MAX && !rig.hasBoard(static_cast<int32_t>(number));
}

bool fits(const Rig& rig, const Groups& groups, const StateContents::value_type& row) {
  const auto& [number, item] = row.first;
  const auto* const value = std::get_if<int64_t>(&row.second);
  // A description is a string, every other value a number.
  if ((value == nullptr) != (item == DescriptionItem)) return false;
  // Only boards can be children.
  if (item == FusionItem) return rig.hasBoard(number) && isGroupNumber(rig, *value);
  if (item == DescriptionItem || item == BoardIdItem) return groups.contains(number) || rig.hasBoard(number);
  const Device* const device = rig.find(number);
  return device != nullptr && hasItem(*device, item);
}

}  // namespace

std::string findMismatch(const Rig& rig, const Groups& groups, const StateContents& contents) {
  for (const auto& row : contents) {
    if (!fits(rig, groups, row)) return foreignItem(row.first.first, nameOf(row.first.second));
  }
  return "";
}

}  // namespace simulator
