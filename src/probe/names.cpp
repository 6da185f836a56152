#include "probe/names.h"

#include <vector>

namespace probe {

std::string HandleNames::nameOf(const void* handle, const char* kind) {
  if (handle == nullptr) return "null";
  int& number = numbers_[handle][kind];
  if (number == 0) number = ++counts_[kind];
  return std::string(kind) + "#" + std::to_string(number);
}

void HandleNames::forget(const void* handle) {
  numbers_.erase(handle);
  std::vector<const void*> owned;
  for (const auto& [child, owner] : owners_) {
    if (owner == handle) owned.push_back(child);
  }
  for (const void* const child : owned) {
    owners_.erase(child);
    forget(child);
  }
}

}  // namespace probe
