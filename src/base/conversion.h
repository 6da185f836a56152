// Conversions between narrow text, wide text and numbers, all in the process's current locale.
#pragma once

#include <velq/types.h>

#include <array>
#include <cstdint>
#include <string>

/// Wide text of up to 256 characters, zero filled, always terminated.
using WideText = std::array<wchar_t, 257>;

/// Widens `text`; what follows a byte that the locale cannot read is left out. More than 256 bytes end the process with
/// abort().
WideText widen(const std::string& text);

/// The multibyte form of `text`, at most 256 bytes; it ends before the first character that the locale cannot write.
std::string narrow(const wchar_t* text);

/// The decimal number at the start of `text`, 0 when there is none, clamped to 32 bits. Aborts as `widen` does.
int32_t parseNumber(const std::string& text);

/// True when all of `text` is made of the digits 0 to 9; so too when it is empty.
bool isAllDigits(const std::string& text);

/// The record of a device that is chosen by description, of which 63 characters are kept. Aborts as `widen` does.
Automation::Velq::DeviceInformation recordOf(const std::string& description);

/// The environment's locale for as long as this object lives; "C" afterwards, whatever was set before.
class EnvironmentLocale {
 public:
  EnvironmentLocale();
  ~EnvironmentLocale();
  EnvironmentLocale(const EnvironmentLocale&) = delete;
  EnvironmentLocale& operator=(const EnvironmentLocale&) = delete;
};
