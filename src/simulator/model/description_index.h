#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace simulator {

/// Finds devices by description. A caller that renames a device removes the old description and adds the new one; a
/// caller that creates or removes devices creates a new index.
class DescriptionIndex {
 public:
  /// Adds the description of a device. Devices are added in the order in which they are listed.
  void add(int32_t number, const std::string& description) { numbers_[description].push_back(number); }

  /// Reverts an `add`.
  void remove(int32_t number, const std::string& description);

  /// The number of the first device with exactly this description; -1 when there is none.
  int32_t find(const std::string& description) const;

  /// Whether a device other than `number` has exactly this description.
  bool isBorneByAnother(const std::string& description, int32_t number) const;

 private:
  std::map<std::string, std::vector<int32_t>> numbers_;  ///< by description; never empty ones
};

}  // namespace simulator
