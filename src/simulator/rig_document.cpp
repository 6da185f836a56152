#include "simulator/rig_document.h"

#include <string_view>

#include "simulator/rig.h"

namespace simulator {

namespace {

constexpr size_t DeepestNesting = 10;

}  // namespace

bool RigDocument::key(std::string& name) {
  Level& level = levels_.back();
  bool isNew = false;
  std::tie(level.member, isNew) = level.container->emplace(std::move(name), nullptr);
  if (!isNew) fail("the key stands twice");
  if (levels_.size() == 1) inDevices_ = level.member.key() == "devices";
  return true;
}

bool RigDocument::parse_error(size_t, const std::string&, const nlohmann::detail::exception& error) {
  const std::string_view what = error.what();
  const size_t line = what.find("line ");
  if (line == std::string_view::npos) fail("expected a number of 64 bits");
  throw RigError(std::string(what.substr(line)));
}

bool RigDocument::put(Json&& value) {
  if (levels_.empty()) {
    last_ = &(document_ = std::move(value));
    return true;
  }
  Level& level = levels_.back();
  const bool inList = level.container->is_array();
  level.next += inList;
  last_ = inList ? &level.container->emplace_back(std::move(value)) : &(*level.member = std::move(value));
  if (inDevices_ && levels_.size() == 1 && !last_->is_array()) fail("expected a list");
  if (inDevices_ && levels_.size() == 2 && !last_->is_object()) fail("expected an object");
  return true;
}

bool RigDocument::open(Json&& container) {
  put(std::move(container));
  levels_.push_back({.container = last_});
  if (levels_.size() > DeepestNesting) fail("expected at most 10 levels");
  return true;
}

bool RigDocument::close() {
  levels_.pop_back();
  if (!inDevices_ || levels_.size() != 2) return true;
  Json& devices = *levels_.back().container;
  takeDevice_(JsonValue(devices.back(), place()));
  devices.erase(0);
  return true;
}

void RigDocument::checkMembers() {
  JsonFields fields(JsonValue(document_, ""));
  fields.required("devices");
  fields.end();
}

std::string RigDocument::place() const {
  std::string pointer;
  for (const Level& level : levels_) {
    if (level.container->is_array() && level.next > 0)
      pointer += "/" + std::to_string(level.next - 1);
    else if (level.container->is_object() && !level.container->empty())
      pointer += "/" + pointerPart(level.member.key());
  }
  return pointer;
}

void RigDocument::fail(const char* problem) const { throw RigError(place() + ": " + problem); }

}  // namespace simulator
