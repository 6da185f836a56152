#include "simulator/rig/json_document.h"

#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace simulator {

namespace {

using Json = nlohmann::json;

// Those of an adjusting code's walk: a deeper document is no rig, and is refused before its end.
constexpr size_t DeepestNesting = 10;

// Builds the document while it is parsed: the parser's own builder would let a later key replace an earlier one.
class Builder final : public nlohmann::json_sax<Json> {
 public:
  Builder(std::string_view key, const std::function<void(const JsonValue&)>& take) : key_(key), take_(take) {}

  Json document;

  bool null() override { return finish(put(nullptr)); }
  bool boolean(bool value) override { return finish(put(value)); }
  bool number_integer(int64_t value) override { return finish(put(value)); }
  bool number_unsigned(uint64_t value) override { return finish(put(value)); }
  bool number_float(double value, const std::string&) override { return finish(put(value)); }
  bool string(std::string& value) override { return finish(put(std::move(value))); }
  bool binary(Json::binary_t&) override { return false; }
  bool start_object(size_t) override { return open(Json::object()); }
  bool start_array(size_t) override { return open(Json::array()); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool key(std::string& name) override {
    Level& level = levels_.back();
    bool isNew = false;
    std::tie(level.member, isNew) = level.container->emplace(std::move(name), nullptr);
    if (!isNew) fail("duplicate key");
    return true;
  }

  bool parse_error(size_t, const std::string&, const nlohmann::detail::exception& error) override {
    const std::string_view what = error.what();
    // The name of the exception, which comes first, says nothing to the author of a rig.
    const size_t line = what.find("line ");
    // The only error without a line: a number that no type can represent.
    if (line == std::string_view::npos) fail("expected a number of 64 bits");
    throw RigError(std::string(what.substr(line)));
  }

 private:
  // A list or object that is not closed yet. Its address stays valid: it is the last value of the one around it, to
  // which nothing is added before it is closed.
  struct Level {
    Json* container;
    Json::iterator member = {};  ///< of an object: its last member
  };

  // Adds a value where the parser is: the document, the next element of a list, or the member whose key came last.
  Json* put(Json&& value) {
    if (levels_.empty()) return &(document = std::move(value));
    const Level& level = levels_.back();
    if (level.container->is_array()) return &level.container->emplace_back(std::move(value));
    return &(*level.member = std::move(value));
  }

  bool open(Json&& container) {
    levels_.push_back({.container = put(std::move(container))});
    if (levels_.size() > DeepestNesting) fail("expected at most 10 levels");
    return true;
  }

  bool close() {
    Json* const container = levels_.back().container;
    levels_.pop_back();
    return finish(container);
  }

  // A value is complete. If it is an element that the caller takes, its JSON is freed at once.
  bool finish(Json* value) {
    if (levels_.size() != 2 || !levels_[1].container->is_array()) return true;
    if (!levels_[0].container->is_object() || levels_[0].member.key() != key_) return true;
    take_(JsonValue(*value, place()));
    *value = nullptr;
    return true;
  }

  // The last value or key as a JSON pointer.
  std::string place() const {
    std::string place;
    for (const Level& level : levels_) {
      if (level.container->empty()) break;
      place += "/" + (level.container->is_array() ? std::to_string(level.container->size() - 1)
                                                  : pointerPart(level.member.key()));
    }
    return place;
  }

  [[noreturn]] void fail(const char* problem) const { throw RigError(place() + ": " + problem); }

  const std::string_view key_;
  const std::function<void(const JsonValue&)>& take_;
  std::vector<Level> levels_;
};

}  // namespace

void parseJson(std::string_view text, std::string_view key, const std::function<void(const JsonValue&)>& takeElement,
               const std::function<void(const JsonValue&)>& takeDocument) {
  Builder builder(key, takeElement);
  // Its result is of no use: Builder throws at the first error.
  Json::sax_parse(text, &builder);
  takeDocument(JsonValue(builder.document, ""));
}

}  // namespace simulator
