// Narrow strings to wide strings and back, in the process's current locale.
#pragma once

#include <array>
#include <string>

/// A wide string of up to 256 characters, zero filled, always terminated.
using WideString = std::array<wchar_t, 257>;

/// Widens `text`; what follows a byte that the locale cannot read is left out. More than 256 bytes end the process with
/// abort().
WideString widen(const std::string& text);

/// The multibyte form of `text`, at most 256 bytes; it ends before the first character that the locale cannot write.
std::string narrow(const wchar_t* text);
