// What the process of a check tells the judge, in memory that both share: it stands however that process ends.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace compliance {

/// A text of bounded length without a pointer in it, so that nothing that a library does to it can lead astray.
template <size_t Room>
class SharedText {
 public:
  void set(std::string_view text) { text_[text.copy(text_, Room - 1)] = 0; }
  std::string get() const { return std::string(text_, std::find(text_, text_ + Room, '\0')); }
  bool isEmpty() const { return text_[0] == 0; }

 private:
  char text_[Room];
};

/// All zero at the beginning of a check.
struct Report {
  SharedText<64> operation;  ///< what is being called; empty between calls
  bool isFinished;           ///< the check has run to its end
  unsigned findings;
  unsigned refusals;
  SharedText<2000> finding;     ///< the first
  SharedText<500> refusal;      ///< the first
  SharedText<500> thrown;       ///< the type of an exception that `operation` let out, and what it says
  SharedText<200> disturbance;  ///< of the process: what was done, and during which call
  SharedText<4096> layer;       ///< the file that answers, where it is not the library's
};

}  // namespace compliance
