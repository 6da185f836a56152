// What comes over and over in a device library: handles, lists, texts that are filled, and operations that are not
// offered. An author may use all of it, parts of it, or none.
#pragma once

#include <velq/fill_missing.h>

#include <algorithm>
#include <deque>
#include <initializer_list>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Automation::Velq {

/// A text was cut to its capacity. Any status 0xA....... says so.
inline constexpr ErrorCode WarningTextCut{0xA0000001};

/// This library does not offer the operation. Any status from 0xC0000000 up says so.
inline constexpr ErrorCode ErrorNotOffered{0xE0000001};

/// The handle of an object of the library's, which has to stay in its place for as long as the handle is valid.
template <typename Kind, typename Object>
Kind* handleOf(Object& object) {
  return reinterpret_cast<Kind*>(&object);
}

/// The object behind a handle that `handleOf` made of an object of this very type.
template <typename Object>
Object& objectOf(Handle* handle) {
  return *reinterpret_cast<Object*>(handle);
}

/// What stands behind an `Array*`: the elements' addresses.
class List {
 public:
  /// Of single objects.
  explicit List(std::vector<void*> elements) : elements_(std::move(elements)) {}

  /// Of all in a container. It has to keep them where they are.
  template <typename Container>
  static List of(Container& values) {
    List list({});
    for (auto& value : values) list.elements_.push_back(&value);
    return list;
  }

  /// Valid as long as this list.
  Array* handle() { return handleOf<Array>(*this); }

  /// Lets the table read lists. All arrays of the library have to be such, then.
  static constexpr void offer(ObjectTable& table) {
    table.Array_getLength = [](Array* array) { return static_cast<int32_t>(objectOf<List>(array).elements_.size()); };
    table.Array_getItem = [](Array* array, int32_t index) {
      return objectOf<List>(array).elements_[static_cast<size_t>(index)];
    };
  }

 private:
  std::vector<void*> elements_;
};

/// A list of installed devices. It keeps these descriptions until the process ends, whatever the devices are called
/// later. What is behind the 63rd character is left out.
inline Array* listOfDevices(const std::vector<std::wstring_view>& descriptions) {
  struct Devices {
    std::deque<InstalledDeviceNode> nodes;
    List list{{}};
  };
  static std::deque<Devices> taken;
  Devices& devices = taken.emplace_back();
  for (const std::wstring_view description : descriptions)
    description.copy(devices.nodes.emplace_back().Description, DescriptionCapacity - 1);
  devices.list = List::of(devices.nodes);
  return devices.list.handle();
}

/// Fills a text that a tool asks for: at most `capacity` characters with the terminator.
inline ErrorCode fillText(std::wstring_view text, int32_t capacity, wchar_t* buffer) {
  const size_t copied = text.copy(buffer, static_cast<size_t>(capacity) - 1);
  buffer[copied] = 0;
  return copied == text.size() ? Success : WarningTextCut;
}

/// The text that a tool gives with a count, in which the terminator is counted or not.
inline std::wstring_view textFrom(int32_t count, const wchar_t* text) {
  const std::wstring_view counted(text, static_cast<size_t>(count));
  return counted.substr(0, counted.find(L'\0'));
}

/// Answers what the library does not offer: a status that says so, a null or a zero.
struct NotOffered {
  template <typename Result>
  static Result give() {
    if constexpr (std::is_same_v<Result, ErrorCode>)
      return ErrorNotOffered;
    else
      return Result();
  }
};

/// The tables of the library, which are made with the first call: each of `offers` puts in what the library offers.
/// What is left is refused, fusion devices with the status that this takes, and all arrays are lists.
inline const LibraryTable* makeLibrary(std::initializer_list<void (*)(ObjectTable&)> offers) {
  static FunctionTable functions{};
  static ObjectTable objects{};
  static const LibraryTable library{.functions = &functions, .objects = &objects};
  if (objects.Array_getLength != nullptr) return &library;
  List::offer(objects);
  for (const auto offer : offers) offer(objects);
  functions.CvxFusionDeviceCreate = [](int32_t, const int32_t*, int32_t*) { return ErrorCannotFuse; };
  fillMissing<NotOffered>(functions);
  fillMissing<NotOffered>(objects);
  return &library;
}

}  // namespace Automation::Velq
