// Where in a JSON document a parser is.
#pragma once

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// A key as a part of a JSON pointer, on one line whatever it holds.
std::string pointerPart(std::string_view key);

/// Follows the events of a parser.
class JsonPlace {
 public:
  /// Takes in the next event. Returns false for a key that its object has already.
  bool follow(nlohmann::json::parse_event_t event, const nlohmann::json& parsed);

  /// The JSON pointer of the value, or the key, of the last event.
  std::string pointer() const;

  /// How many lists and objects are open.
  size_t depth() const { return levels_.size(); }

 private:
  struct Level {
    bool isList;
    size_t next = 0;             ///< of a list: the index of its next element
    std::string key = {};        ///< of an object: its last key
    std::set<std::string> keys;  ///< of an object: all so far
  };

  void countElement();

  std::vector<Level> levels_;
};

}  // namespace simulator
