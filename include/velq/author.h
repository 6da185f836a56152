// Building blocks for device libraries: handles, arrays, string buffers, and operations that a library does not
// support. All of it is optional.
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

/// A string was cut to its capacity. A library may return any status 0xA....... instead.
inline constexpr ErrorCode WarningTextCut{0xA0000001};

/// This library does not support the operation. A library may return any status from 0xC0000000 up instead.
inline constexpr ErrorCode ErrorNotOffered{0xE0000001};

/// The handle of an object of the library, which must not move as long as the handle is valid.
template <typename Kind, typename Object>
Kind* handleOf(Object& object) {
  return reinterpret_cast<Kind*>(&object);
}

/// The object of a handle that `handleOf` returned for exactly this type.
template <typename Object>
Object& objectOf(Handle* handle) {
  return *reinterpret_cast<Object*>(handle);
}

/// The object of an `Array*`: the addresses of its elements.
class List {
 public:
  /// A list of these addresses.
  explicit List(std::vector<void*> elements) : elements_(std::move(elements)) {}

  /// A list of all elements of a container, which must not move them.
  template <typename Container>
  static List of(Container& values) {
    List list({});
    for (auto& value : values) list.elements_.push_back(&value);
    return list;
  }

  /// The handle of this list; valid as long as the list.
  Array* handle() { return handleOf<Array>(*this); }

  /// Sets the two operations on arrays. All arrays of the library have to be lists then.
  static constexpr void offer(ObjectTable& table) {
    table.Array_getLength = [](Array* array) { return static_cast<int32_t>(objectOf<List>(array).elements_.size()); };
    table.Array_getItem = [](Array* array, int32_t index) {
      return objectOf<List>(array).elements_[static_cast<size_t>(index)];
    };
  }

 private:
  std::vector<void*> elements_;
};

/// An array of installed devices with these descriptions, each cut to 63 characters. It lives until the process ends
/// and never changes.
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

/// Fills `buffer` with a string: at most `capacity` characters, 1 or more, terminator included. Returns Success, or
/// WarningTextCut when the string is longer.
inline ErrorCode fillText(std::wstring_view text, int32_t capacity, wchar_t* buffer) {
  const size_t copied = text.copy(buffer, static_cast<size_t>(capacity) - 1);
  buffer[copied] = 0;
  return copied == text.size() ? Success : WarningTextCut;
}

/// The string of a tool that passes it with a count, which may include the terminator.
inline std::wstring_view textFrom(int32_t count, const wchar_t* text) {
  const std::wstring_view counted(text, static_cast<size_t>(count));
  return counted.substr(0, counted.find(L'\0'));
}

/// The result of an operation that the library does not support: ErrorNotOffered, null or 0.
struct NotOffered {
  template <typename Result>
  static Result give() {
    if constexpr (std::is_same_v<Result, ErrorCode>)
      return ErrorNotOffered;
    else
      return Result();
  }
};

/// The tables of the library, created with the first call: each of `offers` sets the operations that it supports. All
/// others fail, with ErrorCannotFuse for new fusion devices, and all arrays are lists.
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
