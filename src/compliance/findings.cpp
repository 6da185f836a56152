#include "compliance/findings.h"

namespace compliance {

void Findings::note(const std::string& what, const std::string& where) {
  if (count_++ == 0) first_ = what + ", " + where;
}

std::string Findings::summary() const {
  return count_ == 1 ? first_ : first_ + " (and " + std::to_string(count_ - 1) + " more)";
}

}  // namespace compliance
