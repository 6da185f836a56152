#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace simulator {

/// Finds devices by description. It holds what it was told: whoever renames a device tells both descriptions, and
/// whoever makes or removes devices begins a new index.
class DescriptionIndex {
 public:
  /// Notes that a device bears a description.
  void add(int32_t number, const std::string& description) { numbers_[description].insert(number); }

  /// Takes back an `add`.
  void remove(int32_t number, const std::string& description);

  /// The lowest number of a device with exactly this description; -1 when there is none.
  int32_t find(const std::string& description) const;

  /// Whether a device other than `number` has exactly this description.
  bool isBorneByAnother(const std::string& description, int32_t number) const;

 private:
  std::map<std::string, std::set<int32_t>> numbers_;  ///< by description; never empty ones
};

}  // namespace simulator
