// UTF-8, as files hold it, and the wide strings of the boundary. Independent of the process's locale, which belongs to
// the tool.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace text {

/// The wide form of valid UTF-8.
std::wstring fromUtf8(std::string_view text);

/// The UTF-8 form of a wide string; nothing when an element is not a Unicode character.
std::optional<std::string> toUtf8(std::wstring_view text);

/// Whether `text` is valid UTF-8.
bool isUtf8(std::string_view text);

/// The number of characters in valid UTF-8.
size_t characterCount(std::string_view text);

}  // namespace text
