// Parsing the JSON of a rig.
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

namespace simulator {

/// What `text` holds. Throws RigError for what is no JSON, and for what a parser lets pass but no rig has: a key that
/// stands twice in one object, nesting of more than ten levels.
nlohmann::json parseJson(std::string_view text);

}  // namespace simulator
