#include "operations/conversion.h"

#include <cstdlib>
#include <cwchar>

WideString widen(const std::string& text) {
  WideString wide{};
  // Quirk: ends the process, and does not cut.
  if (text.size() >= wide.size()) std::abort();
  std::mbstowcs(wide.data(), text.c_str(), text.size());
  return wide;
}

std::string narrow(const wchar_t* text) {
  // Zero filled: wcstombs terminates nothing when it stops early.
  std::array<char, 257> bytes{};
  std::wcstombs(bytes.data(), text, bytes.size() - 1);
  return bytes.data();
}
