#include "base/conversion.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cwchar>

using namespace Automation::Velq;

WideText widen(const std::string& text) {
  WideText wide{};
  if (text.size() >= wide.size()) std::abort();
  std::mbstowcs(wide.data(), text.c_str(), text.size());
  return wide;
}

std::string narrow(const wchar_t* text) {
  std::array<char, 257> bytes{};
  std::wcstombs(bytes.data(), text, bytes.size() - 1);
  return bytes.data();
}

int32_t parseNumber(const std::string& text) {
  const long number = std::wcstol(widen(text).data(), nullptr, 10);
  return static_cast<int32_t>(std::clamp<long>(number, INT32_MIN, INT32_MAX));
}

bool isAllDigits(const std::string& text) { return text.find_first_not_of("0123456789") == std::string::npos; }

DeviceInformation recordOf(const std::string& description) {
  DeviceInformation record{.DeviceNumber = -1, .OpenMode = AccessDevice, .ModuleIndex = 0, .Description = {}};
  std::wcsncpy(record.Description, widen(description).data(), std::size(record.Description) - 1);
  return record;
}

EnvironmentLocale::EnvironmentLocale() { std::setlocale(LC_ALL, ""); }
EnvironmentLocale::~EnvironmentLocale() { std::setlocale(LC_ALL, "C"); }
