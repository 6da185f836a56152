// Parsing the JSON of a rig.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string_view>

#include "simulator/rig/json_fields.h"

namespace simulator {

/// What `text` holds. The elements of the list `key` of the document go to `take` as soon as each is complete and are
/// null in what is returned, for the JSON of a large rig would be many times its file. Throws RigError for what is no
/// JSON, and for what a parser lets pass but no rig has: a key that stands twice in one object, nesting of more than
/// ten levels.
nlohmann::json parseJson(std::string_view text, std::string_view key,
                         const std::function<void(const JsonValue&)>& take);

}  // namespace simulator
