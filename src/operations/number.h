// Numbers in arguments.
#pragma once

#include <cstdint>
#include <string>

/// The decimal number at the start of `text`, 0 when there is none, clamped to 32 bits. More than 256 bytes end the
/// process with abort().
int32_t parseNumber(const std::string& text);

/// Whether `text` has no character but the digits 0 to 9; true when it is empty.
bool isAllDigits(const std::string& text);
