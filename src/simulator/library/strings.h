// Strings for tools: wide and terminated.
#pragma once

#include <cstdint>
#include <string_view>

#include "simulator/model/status.h"

namespace simulator {

/// A terminated wide copy of UTF-8 `text` that lives until the library unloads.
const wchar_t* internedWide(std::string_view text);

/// Fills `buffer` with at most `capacity` - 1 characters and a terminator. Returns Success; WarningTextCut for a string
/// that is longer; ErrorRefused, with nothing written, for a capacity of 0 or less.
ErrorCode fill(std::string_view text, int32_t capacity, wchar_t* buffer);

}  // namespace simulator
