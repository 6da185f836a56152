// Reading the JSON of a rig.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "simulator/json_fields.h"

namespace simulator {

/// Builds the document while it is parsed, and takes the devices out of it one by one, so that a large rig never stands
/// in memory as JSON. Every function throws RigError.
class RigDocument : private nlohmann::json_sax<nlohmann::json> {
 public:
  /// `takeDevice` gets each element of "devices", an object, as soon as it is complete.
  explicit RigDocument(std::function<void(const JsonValue&)> takeDevice) : takeDevice_(std::move(takeDevice)) {}

  /// Parses what nlohmann::json takes as input, and makes sure that "devices" is all that is there.
  template <typename Input>
  void parse(Input&& input) {
    nlohmann::json::sax_parse(std::forward<Input>(input), static_cast<nlohmann::json_sax<Json>*>(this));
    checkMembers();
  }

 private:
  using Json = nlohmann::json;

  // One open list or object.
  struct Level {
    Json* container;
    size_t next = 0;             ///< of a list: the index of its next element
    Json::iterator member = {};  ///< of an object: its last member
  };

  bool null() override { return put(nullptr); }
  bool boolean(bool value) override { return put(value); }
  bool number_integer(int64_t value) override { return put(value); }
  bool number_unsigned(uint64_t value) override { return put(value); }
  bool number_float(double value, const std::string&) override { return put(value); }
  bool string(std::string& value) override { return put(std::move(value)); }
  bool binary(Json::binary_t&) override { return false; }
  bool start_object(size_t) override { return open(Json::object()); }
  bool start_array(size_t) override { return open(Json::array()); }
  bool key(std::string& name) override;
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }
  bool parse_error(size_t, const std::string&, const nlohmann::detail::exception& error) override;

  bool put(Json&& value);
  bool open(Json&& container);
  bool close();
  void checkMembers();
  std::string place() const;  ///< of the last value or key, as a JSON pointer
  [[noreturn]] void fail(const char* problem) const;

  std::function<void(const JsonValue&)> takeDevice_;
  Json document_;
  std::vector<Level> levels_;
  Json* last_ = nullptr;  ///< the last value
  bool inDevices_ = false;
};

}  // namespace simulator
