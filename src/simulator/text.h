// Texts: UTF-8 in the rig and the state, wide at the boundary. Independent of the process's locale, which belongs to
// the tool.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/status.h"

namespace simulator {

/// The wide form of valid UTF-8.
std::wstring fromUtf8(std::string_view text);

/// The UTF-8 form of wide text; nothing when it holds what is no character.
std::optional<std::string> toUtf8(std::wstring_view text);

/// Whether `text` is valid UTF-8.
bool isUtf8(std::string_view text);

/// The number of characters in valid UTF-8.
size_t characterCount(std::string_view text);

/// A terminated wide copy of UTF-8 `text` that lives until the library unloads.
const wchar_t* lasting(std::string_view text);

/// Fills `buffer` as the boundary demands: at most `capacity` - 1 characters and a terminator. Gives WarningTextCut for
/// a text that does not fit; ErrorRefused, with nothing written, for a buffer without room.
ErrorCode fill(std::string_view text, int32_t capacity, wchar_t* buffer);

}  // namespace simulator
