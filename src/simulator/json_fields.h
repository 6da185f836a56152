// Strict reading of JSON: every value has its type and range, every key is known. Each failure names its place as a
// JSON pointer.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// One JSON value and its place.
class JsonValue {
 public:
  /// Keeps a reference to `value`.
  JsonValue(const nlohmann::json& value, std::string place) : value_(value), place_(std::move(place)) {}

  /// An integer, or a text "0x..." in hexadecimal, from `lowest` to `highest`. Throws RigError, as all functions here.
  int64_t number(int64_t lowest, int64_t highest) const;
  int32_t int32(int32_t lowest = INT32_MIN) const { return static_cast<int32_t>(number(lowest, INT32_MAX)); }
  uint64_t unsigned64() const;

  /// A text of at most `longest` characters, without a terminator inside.
  std::string text(size_t longest = 1000) const;

  bool boolean() const;

  /// A list, its elements read by `read`.
  template <typename Element>
  std::vector<Element> list(const std::function<Element(const JsonValue&)>& read) const;

  [[noreturn]] void fail(const std::string& expected) const;

  const nlohmann::json& json() const { return value_; }
  const std::string& place() const { return place_; }

 private:
  const nlohmann::json& value_;
  std::string place_;
};

/// The members of a JSON object. Each is taken once; `end` refuses what was not.
class JsonFields {
 public:
  explicit JsonFields(const JsonValue& object);

  JsonValue required(const char* key);
  std::optional<JsonValue> optional(const char* key);
  void end() const;

 private:
  const JsonValue object_;
  std::vector<std::string> taken_;
};

template <typename Element>
std::vector<Element> JsonValue::list(const std::function<Element(const JsonValue&)>& read) const {
  if (!value_.is_array()) fail("a list");
  std::vector<Element> elements;
  elements.reserve(value_.size());
  for (size_t i = 0; i < value_.size(); ++i)
    elements.push_back(read(JsonValue(value_[i], place_ + "/" + std::to_string(i))));
  return elements;
}

}  // namespace simulator
