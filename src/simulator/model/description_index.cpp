#include "simulator/model/description_index.h"

#include <cassert>

namespace simulator {

void DescriptionIndex::remove(int32_t number, const std::string& description) {
  const auto found = numbers_.find(description);
  assert(found != numbers_.end());
  const size_t count = std::erase(found->second, number);
  assert(count == 1);
  // Not used without asserts.
  static_cast<void>(count);
  if (found->second.empty()) numbers_.erase(found);
}

std::optional<int32_t> DescriptionIndex::find(const std::string& description) const {
  const auto found = numbers_.find(description);
  return found == numbers_.end() ? std::nullopt : std::optional(found->second.front());
}

bool DescriptionIndex::isUsedByAnother(const std::string& description, int32_t number) const {
  const auto found = numbers_.find(description);
  return found != numbers_.end() && found->second != std::vector{number};
}

}  // namespace simulator
