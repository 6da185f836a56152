#include "probe/names.h"

#include <utility>

namespace probe {

std::string HandleNames::nameOf(const void* handle, const char* kind) {
  if (handle == nullptr) return "null";
  int& number = numbers_[handle][kind];
  if (number == 0) number = ++counts_[kind];
  return std::string(kind) + "#" + std::to_string(number);
}

void HandleNames::adopt(const void* handle, const void* parent) {
  // A library may return an object from several owners, or use an address again: the last owner counts.
  if (std::exchange(parents_[handle], parent) != parent) children_[parent].push_back(handle);
}

void HandleNames::forget(const void* handle) {
  numbers_.erase(handle);
  const auto node = children_.extract(handle);
  if (node.empty()) return;
  for (const void* const child : node.mapped()) {
    const auto known = parents_.find(child);
    if (known == parents_.end() || known->second != handle) continue;
    // Erased first: in a library that returns a handle twice, an owner can be below itself.
    parents_.erase(known);
    forget(child);
  }
}

}  // namespace probe
