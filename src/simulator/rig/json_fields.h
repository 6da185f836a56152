// Strict reading of JSON: every value has its type and range, every key is known. Each failure names its place as a
// JSON pointer.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace simulator {

/// A rig that cannot be used. what() is "PLACE: what is wrong there", without the file's name; strings of the
/// rig are in it unchanged.
struct RigError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A key as a part of a JSON pointer.
std::string pointerPart(std::string_view key);

/// One JSON value and its place. It keeps references to the arguments of its constructor.
class JsonValue {
 public:
  /// A value at the JSON pointer `place`.
  JsonValue(const nlohmann::json& value, std::string_view place) : value_(value), name_(place) {}

  /// A member of `parent`, or, with an empty key, an element.
  JsonValue(const nlohmann::json& value, const JsonValue& parent, std::string_view key, size_t index = 0)
      : value_(value), parent_(&parent), name_(key), index_(index) {}

  /// An integer, or a string "0x..." in hexadecimal, from `lowest` to `highest`. Throws RigError, as all functions
  /// here.
  int64_t number(int64_t lowest, int64_t highest) const;

  /// As `number`, for one of 32 bits.
  int32_t int32(int32_t lowest = INT32_MIN) const { return static_cast<int32_t>(number(lowest, INT32_MAX)); }

  /// As `number`, for one of 64 bits without a sign.
  uint64_t unsigned64() const;

  /// A string of at most `longest` characters, without U+0000.
  std::string text(size_t longest = 1000) const;

  /// true or false.
  bool boolean() const;

  /// The number of elements of a list.
  size_t length() const;

  /// An element of a list, 0 <= index < length(); valid as long as this value.
  JsonValue element(size_t index) const;

  /// A list, its elements read by `read`.
  template <typename Read>
  auto list(Read read) const {
    const size_t count = length();
    std::vector<std::invoke_result_t<Read, const JsonValue&>> elements;
    elements.reserve(count);
    for (size_t i = 0; i < count; ++i) elements.push_back(read(element(i)));
    return elements;
  }

  /// Whether this is a string, and not a number in hexadecimal.
  bool isPlainString() const;

  /// Throws the error "PLACE: expected EXPECTED".
  [[noreturn]] void fail(const std::string& expected) const;

  /// The value as the parser left it.
  const nlohmann::json& json() const { return value_; }

  /// As a JSON pointer. Created only here, because hardly a value is faulty.
  std::string place() const;

 private:
  [[noreturn]] void failNumber(const std::string& range) const;

  const nlohmann::json& value_;
  const JsonValue* parent_ = nullptr;
  std::string_view name_;  ///< empty for an element
  size_t index_ = 0;
};

/// The members of a JSON object. Each is read once; `end` rejects any other.
class JsonFields {
 public:
  /// Throws RigError when `object` is none.
  explicit JsonFields(const JsonValue& object);
  JsonFields(const JsonFields&) = delete;
  JsonFields& operator=(const JsonFields&) = delete;

  /// The member `key`. Throws RigError when there is none. `key` has to live as long as the fields, and these as long
  /// as the values that they return.
  JsonValue required(const char* key);

  /// The same; nothing when there is none.
  std::optional<JsonValue> optional(const char* key);

  /// Throws RigError for a member that was not read.
  void end() const;

 private:
  const JsonValue object_;
  std::vector<std::string_view> known_;
  size_t present_ = 0;  ///< how many of those are there
};

}  // namespace simulator
