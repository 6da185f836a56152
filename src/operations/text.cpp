#include "operations/text.h"

#include <cstdlib>
#include <cwchar>

WideText widen(const std::string& text) {
  WideText wide{};
  // Deliberately no cut: half of a path or of a password would do something else than what was asked for.
  if (text.size() >= wide.size()) std::abort();
  std::mbstowcs(wide.data(), text.c_str(), text.size());
  return wide;
}

std::string narrow(const wchar_t* text) {
  std::array<char, 257> bytes{};
  std::wcstombs(bytes.data(), text, bytes.size() - 1);
  return bytes.data();
}
