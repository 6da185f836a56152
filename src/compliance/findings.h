// What a check found broken.
#pragma once

#include <string>

namespace compliance {

class Findings {
 public:
  /// Notes that `what` was found at `where` unless the promise holds. Returns `holds`.
  bool expect(bool holds, const std::string& what, const std::string& where) {
    if (!holds) note(what, where);
    return holds;
  }

  bool isEmpty() const { return count_ == 0; }

  /// The first finding and the number of the others, one line.
  std::string summary() const;

 private:
  void note(const std::string& what, const std::string& where);

  std::string first_;
  size_t count_ = 0;
};

}  // namespace compliance
