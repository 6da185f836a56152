#include "operations/number.h"

#include <algorithm>
#include <cwchar>

#include "operations/conversion.h"

int32_t parseNumber(const std::string& text) {
  const long number = std::wcstol(widen(text).data(), nullptr, 10);
  // long has 64 bits on most machines, and 32 on others.
  return static_cast<int32_t>(std::clamp<long>(number, INT32_MIN, INT32_MAX));
}

bool isAllDigits(const std::string& text) { return text.find_first_not_of("0123456789") == std::string::npos; }
