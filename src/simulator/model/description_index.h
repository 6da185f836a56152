#pragma once

#include <cassert>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// Finds devices by description. A caller that renames a device removes the old description and adds the new one; a
/// caller that creates or removes devices creates a new index.
class DescriptionIndex {
 public:
  /// Adds the description of a device. Devices are added in the order in which they are listed.
  void add(int32_t number, const std::string& description) { numbers_[description].push_back(number); }

  /// Reverts an `add` with the same arguments.
  void remove(int32_t number, const std::string& description) {
    const auto found = numbers_.find(description);
    assert(found != numbers_.end());
    [[maybe_unused]] const size_t count = std::erase(found->second, number);
    assert(count == 1);
    if (found->second.empty()) numbers_.erase(found);
  }

  /// The number of the first device with exactly this description; nothing when there is none.
  std::optional<int32_t> find(const std::string& description) const {
    const auto found = numbers_.find(description);
    return found == numbers_.end() ? std::nullopt : std::optional(found->second.front());
  }

  /// Whether a device other than `number` has exactly this description.
  bool isUsedByAnother(const std::string& description, int32_t number) const {
    const auto found = numbers_.find(description);
    return found != numbers_.end() && found->second != std::vector{number};
  }

  bool operator==(const DescriptionIndex&) const = default;

 private:
  std::map<std::string, std::vector<int32_t>> numbers_;  ///< by description; never empty
};

}  // namespace simulator
