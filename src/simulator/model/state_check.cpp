#include "simulator/model/state_check.h"

namespace simulator {

namespace {

// A fusion device of the rig, one that a command may make, or none.
bool isGroupNumber(const Rig& rig, int64_t number) {
  return number >= -1 && number <= INT32_MAX && !rig.hasBoard(static_cast<int32_t>(number));
}

bool hasCalibrationItem(const Device& device, const std::string& item) {
  for (size_t i = 0; device.calibration && i < device.calibration->size(); ++i) {
    const std::vector<Section>& sections = (*device.calibration)[i].sections;
    for (size_t k = 0; k < sections.size(); ++k) {
      for (size_t j = 0; j < sections[k].items.size(); ++j) {
        if (item == calibrationItem(i, k, j)) return true;
      }
    }
  }
  return false;
}

bool hasChip(const Device& device, const std::string& item) {
  for (size_t chip = 0; device.firmware && chip < device.firmware->size(); ++chip) {
    if (item == firmwareItem(chip)) return true;
  }
  return false;
}

bool fits(const Rig& rig, const Groups& groups, const StateContents::value_type& row) {
  const auto& [number, item] = row.first;
  const bool exists = groups.contains(number) || rig.hasBoard(number);
  if (item == "description") return exists && std::holds_alternative<std::string>(row.second);
  const auto* const value = std::get_if<int64_t>(&row.second);
  if (value == nullptr) return false;
  if (item == "board id") return exists;
  if (item == "fusion") return rig.hasBoard(number) && isGroupNumber(rig, *value);
  const Device* const device = rig.find(number);
  return device != nullptr && (hasChip(*device, item) || hasCalibrationItem(*device, item));
}

}  // namespace

std::string findMismatch(const Rig& rig, const Groups& groups, const StateContents& contents) {
  for (const auto& row : contents) {
    if (fits(rig, groups, row)) continue;
    const auto& [number, item] = row.first;
    return "was written for another rig (device " + std::to_string(number) + " has no \"" + item +
           "\" here) and is not used; name another file with VELQ_STATE, or delete this one";
  }
  return "";
}

std::string firmwareItem(size_t chip) { return "firmware " + std::to_string(chip); }

std::string calibrationItem(size_t solution, size_t section, size_t item) {
  return "calibration " + std::to_string(solution) + "." + std::to_string(section) + "." + std::to_string(item);
}

}  // namespace simulator
