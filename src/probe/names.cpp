#include "probe/names.h"

namespace probe {

std::string HandleNames::nameOf(const void* handle, const char* kind) {
  if (handle == nullptr) return "null";
  const auto known = names_.find(handle);
  if (known == names_.end() || known->second.kind != kind) names_[handle] = {kind, ++counts_[kind]};
  return std::string(kind) + "#" + std::to_string(names_[handle].number);
}

}  // namespace probe
