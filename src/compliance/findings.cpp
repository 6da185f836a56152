#include "compliance/findings.h"

namespace compliance {

bool Findings::expect(bool holds, const std::string& what, const std::string& where) {
  if (holds) return true;
  if (count_++ == 0) first_ = what + ", " + where;
  return false;
}

std::string Findings::summary() const {
  return count_ == 1 ? first_ : first_ + " (and " + std::to_string(count_ - 1) + " more)";
}

}  // namespace compliance
