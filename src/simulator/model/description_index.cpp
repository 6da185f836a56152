#include "simulator/model/description_index.h"

namespace simulator {

void DescriptionIndex::remove(int32_t number, const std::string& description) {
  const auto found = numbers_.find(description);
  if (found == numbers_.end()) return;
  std::erase(found->second, number);
  if (found->second.empty()) numbers_.erase(found);
}

int32_t DescriptionIndex::find(const std::string& description) const {
  const auto found = numbers_.find(description);
  return found == numbers_.end() ? -1 : found->second.front();
}

bool DescriptionIndex::isBorneByAnother(const std::string& description, int32_t number) const {
  const auto found = numbers_.find(description);
  return found != numbers_.end() && found->second != std::vector{number};
}

}  // namespace simulator
