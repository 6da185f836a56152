// Parsing the JSON of a rig.
#pragma once

#include <functional>
#include <string_view>

#include "simulator/rig/json_fields.h"

namespace simulator {

/// Parses a document. `takeElement` gets each element of its list `key` as soon as that is complete; `takeDocument`
/// gets the document, with null for these elements, because the JSON of a large rig takes many times the memory of its
/// file. Throws RigError for a string that is not JSON, a key that is twice in one object, and more than ten levels.
void parseJson(std::string_view text, std::string_view key, const std::function<void(const JsonValue&)>& takeElement,
               const std::function<void(const JsonValue&)>& takeDocument);

}  // namespace simulator
