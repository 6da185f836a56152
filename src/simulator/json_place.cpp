#include "simulator/json_place.h"

#include <cstdio>

namespace simulator {

std::string pointerPart(std::string_view key) {
  std::string part;
  for (const char c : key) {
    char escaped[8] = {c};
    if (c == '~' || c == '/') snprintf(escaped, sizeof escaped, "~%d", c == '/');
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
    part += escaped;
  }
  return part;
}

bool JsonPlace::follow(nlohmann::json::parse_event_t event, const nlohmann::json& parsed) {
  using Event = nlohmann::json::parse_event_t;
  switch (event) {
    case Event::key:
      levels_.back().key = parsed.get_ref<const std::string&>();
      return levels_.back().keys.insert(levels_.back().key).second;
    case Event::value:
      countElement();
      break;
    case Event::object_start:
    case Event::array_start:
      countElement();
      levels_.push_back({.isList = event == Event::array_start, .keys = {}});
      break;
    case Event::object_end:
    case Event::array_end:
      levels_.pop_back();
  }
  return true;
}

std::string JsonPlace::pointer() const {
  std::string pointer;
  for (const Level& level : levels_) {
    if (level.isList ? level.next > 0 : !level.key.empty())
      pointer += "/" + (level.isList ? std::to_string(level.next - 1) : pointerPart(level.key));
  }
  return pointer;
}

void JsonPlace::countElement() {
  if (!levels_.empty() && levels_.back().isList) ++levels_.back().next;
}

}  // namespace simulator
