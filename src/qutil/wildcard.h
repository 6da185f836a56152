// New descriptions from old ones: "?" and "*" in the new one are replaced by parts of the old one.
#pragma once

#include <string>

/// Appends to `output` the `pattern` with its wildcards filled from `source`. "?" takes the byte at its own position,
/// the first "*" all from its position on; the wildcards behind that "*" are dropped. Positions are counted in the
/// pattern, so in "?*" the "*" starts at byte 1.
void MyReplace(std::string source, std::string pattern, std::string& output);

/// Removes every `character` from `text`.
void RemoveChar(std::string& text, char character);
