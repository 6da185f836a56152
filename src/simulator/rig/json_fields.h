// Strict reading of JSON: every value has its type and range, every key is known. Each failure names its place as a
// JSON pointer.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace simulator {

/// A rig that cannot be used. what() is "PLACE: what is wrong there", without the file's name; what the rig holds
/// stands in it as it is.
struct RigError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A key as a part of a JSON pointer.
std::string pointerPart(std::string_view key);

/// One JSON value and its place. Keeps references to all that it is made of.
class JsonValue {
 public:
  /// A value that stands at the JSON pointer `place`.
  JsonValue(const nlohmann::json& value, std::string_view place) : value_(value), name_(place) {}

  /// A member of `parent`, or an element.
  JsonValue(const nlohmann::json& value, const JsonValue& parent, std::string_view key)
      : value_(value), parent_(&parent), name_(key) {}
  JsonValue(const nlohmann::json& value, const JsonValue& parent, size_t index)
      : value_(value), parent_(&parent), index_(index) {}

  /// An integer, or a text "0x..." in hexadecimal, from `lowest` to `highest`. Throws RigError, as all functions here.
  int64_t number(int64_t lowest, int64_t highest) const;

  /// As `number`, for one of 32 bits.
  int32_t int32(int32_t lowest = INT32_MIN) const { return static_cast<int32_t>(number(lowest, INT32_MAX)); }

  /// As `number`, for one of 64 bits without a sign.
  uint64_t unsigned64() const;

  /// A text of at most `longest` characters, without a terminator inside.
  std::string text(size_t longest = 1000) const;

  /// true or false.
  bool boolean() const;

  /// A list, its elements read by `read`.
  template <typename Read>
  auto list(Read read) const -> std::vector<std::invoke_result_t<Read, const JsonValue&>>;

  /// Throws the error "PLACE: expected EXPECTED".
  [[noreturn]] void fail(const std::string& expected) const;

  /// The value as the parser left it.
  const nlohmann::json& json() const { return value_; }

  /// As a JSON pointer. Made only when asked for, for of a thousand values not one is faulty.
  std::string place() const;

 private:
  [[noreturn]] void failNumber(const std::string& range) const;

  const nlohmann::json& value_;
  const JsonValue* parent_ = nullptr;
  std::string_view name_;  ///< empty for an element
  size_t index_ = 0;
};

/// The members of a JSON object. Each is taken once; `end` refuses what was not.
class JsonFields {
 public:
  /// Throws RigError when `object` is none.
  explicit JsonFields(const JsonValue& object);
  JsonFields(const JsonFields&) = delete;
  JsonFields& operator=(const JsonFields&) = delete;

  /// The member `key`. Throws RigError when there is none. `key` is kept, and so are the fields by the values that they
  /// give.
  JsonValue required(const char* key);

  /// The same; nothing when there is none.
  std::optional<JsonValue> optional(const char* key);

  /// Throws RigError for a member that was not asked for.
  void end() const;

 private:
  const JsonValue object_;
  std::vector<std::string_view> known_;
  size_t present_ = 0;  ///< how many of those are there
};

template <typename Read>
auto JsonValue::list(Read read) const -> std::vector<std::invoke_result_t<Read, const JsonValue&>> {
  if (!value_.is_array()) fail("a list");
  std::vector<std::invoke_result_t<Read, const JsonValue&>> elements;
  elements.reserve(value_.size());
  for (size_t i = 0; i < value_.size(); ++i) elements.push_back(read(JsonValue(value_[i], *this, i)));
  return elements;
}

}  // namespace simulator
