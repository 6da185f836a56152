#include "simulator/rig/json_fields.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <utility>

#include "text/utf8.h"

namespace simulator {

namespace {

// Strict, unlike the functions of the C library: no spaces, no sign, no rest.
std::optional<uint64_t> hexadecimal(const nlohmann::json& value) {
  if (!value.is_string()) return std::nullopt;
  const auto& text = value.get_ref<const std::string&>();
  uint64_t number = 0;
  if (!text.starts_with("0x")) return std::nullopt;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), number, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

std::string pointerPart(std::string_view key) {
  std::string part;
  // In a JSON pointer '/' separates keys, and '~' begins an escape.
  for (const char c : key) part += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  return part;
}

std::string JsonValue::place() const {
  if (parent_ == nullptr) return std::string(name_);
  return parent_->place() + "/" + (name_.empty() ? std::to_string(index_) : std::string(name_));
}

void JsonValue::fail(const std::string& expected) const {
  throw RigError((place().empty() ? "the document" : place()) + ": expected " + expected);
}

void JsonValue::failNumber(const std::string& range) const {
  fail("a number from " + range + (isPlainString() ? "; a string needs \"0x\" before its hexadecimal digits" : ""));
}

int64_t JsonValue::number(int64_t lowest, int64_t highest) const {
  const auto failRange = [&] { failNumber(std::to_string(lowest) + " to " + std::to_string(highest)); };
  // The parser has one type for negative integers and one for all other integers.
  if (value_.is_number_integer() && !value_.is_number_unsigned()) {
    const auto number = value_.get<int64_t>();
    if (number >= lowest && number <= highest) return number;
    failRange();
  }
  const std::optional<uint64_t> number = value_.is_number_unsigned() ? value_.get<uint64_t>() : hexadecimal(value_);
  if (!number || std::cmp_less(*number, lowest) || std::cmp_greater(*number, highest)) failRange();
  return static_cast<int64_t>(*number);
}

uint64_t JsonValue::unsigned64() const {
  const std::optional<uint64_t> number = value_.is_number_unsigned() ? value_.get<uint64_t>() : hexadecimal(value_);
  if (!number) failNumber("0 to 0xffffffffffffffff");
  return *number;
}

std::string JsonValue::text(size_t longest) const {
  if (!value_.is_string()) fail("a string");
  const auto& text = value_.get_ref<const std::string&>();
  if (text.find('\0') != std::string::npos) fail("a string without the character U+0000");
  // Bytes first: most strings are short enough without counting their characters.
  if (text.size() > longest && text::characterCount(text) > longest)
    fail("a string of at most " + std::to_string(longest) + " characters");
  return text;
}

size_t JsonValue::length() const {
  if (!value_.is_array()) fail("a list");
  return value_.size();
}

JsonValue JsonValue::element(size_t index) const { return {value_[index], *this, "", index}; }

bool JsonValue::isPlainString() const {
  return value_.is_string() && !value_.get_ref<const std::string&>().starts_with("0x");
}

bool JsonValue::boolean() const {
  if (!value_.is_boolean()) fail("true or false");
  return value_.get<bool>();
}

JsonFields::JsonFields(const JsonValue& object) : object_(object) {
  if (!object.json().is_object()) object.fail("an object");
  // More keys than any object of a rig has.
  known_.reserve(16);
}

JsonValue JsonFields::required(const char* key) {
  const std::optional<JsonValue> value = optional(key);
  if (!value) object_.fail(std::string("the key \"") + key + "\"");
  return *value;
}

std::optional<JsonValue> JsonFields::optional(const char* key) {
  // Known whether or not it is there: the error for an unknown key lists all.
  known_.emplace_back(key);
  const auto found = object_.json().find(key);
  if (found == object_.json().end()) return std::nullopt;
  ++present_;
  return JsonValue(*found, object_, key);
}

void JsonFields::end() const {
  // By number first, because hardly an object has an unknown key.
  if (present_ == object_.json().size()) return;
  for (const auto& [key, value] : object_.json().items()) {
    if (std::find(known_.begin(), known_.end(), key) != known_.end()) continue;
    std::string names;
    for (const std::string_view name : known_) names.append(names.empty() ? "" : ", ").append(name);
    throw RigError(object_.place() + "/" + pointerPart(key) + ": unknown key; expected one of " + names);
  }
}

}  // namespace simulator
