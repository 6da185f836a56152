#include "probe/names.h"

namespace probe {

std::string HandleNames::nameOf(const void* handle, const char* kind) {
  if (handle == nullptr) return "null";
  int& number = numbers_[handle][kind];
  if (number == 0) number = ++counts_[kind];
  return std::string(kind) + "#" + std::to_string(number);
}

void HandleNames::adopt(const void* handle, const void* parent) {
  const auto [known, isNew] = parents_.emplace(handle, parent);
  if (!isNew && known->second == parent) return;
  // A library may return an object from several owners, or use an address again: the last owner counts.
  if (!isNew) children_[known->second].erase(handle);
  known->second = parent;
  children_[parent].insert(handle);
}

void HandleNames::forget(const void* handle) {
  numbers_.erase(handle);
  const auto node = children_.extract(handle);
  if (node.empty()) return;
  // Taken out first: in a library that returns a handle twice, an owner can be below itself.
  for (const void* const child : node.mapped()) {
    parents_.erase(child);
    forget(child);
  }
}

}  // namespace probe
