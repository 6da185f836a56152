// Strings as the boundary wants them: wide, and terminated.
#pragma once

#include <cstdint>
#include <string_view>

#include "simulator/model/status.h"

namespace simulator {

/// A terminated wide copy of UTF-8 `text` that lives until the library unloads.
const wchar_t* internedWide(std::string_view text);

/// Fills `buffer` as the boundary demands: at most `capacity` - 1 characters and a terminator. Gives WarningTextCut for
/// a text that does not fit; ErrorRefused, with nothing written, for a buffer without room.
ErrorCode fill(std::string_view text, int32_t capacity, wchar_t* buffer);

}  // namespace simulator
