// Calls as a trace shows them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "probe/names.h"
#include "text/escaped.h"

namespace probe {

/// Values as a trace shows them; "null" for null. Of a list no more than fusion devices can have children.
std::string show(const velq::DeviceInformation* device);
std::string show(const int32_t* values, int64_t count);
std::string showCodes(const uint32_t* codes);

/// Values that are shown without their neighbours: a string, a status, a number or a handle.
inline std::string show(HandleNames&, const wchar_t* text) { return text::escaped(text); }
inline std::string show(HandleNames&, velq::ErrorCode status) { return text::hexadecimal(status); }
inline std::string show(HandleNames&, velq::Scenario scenario) { return text::hexadecimal(scenario); }
inline std::string show(HandleNames&, int32_t number) { return std::to_string(number); }
template <typename Handle>
std::string show(HandleNames& names, Handle* handle) {
  return names.nameOf(handle, kindName<Handle>());
}

/// Shows argument `Index` of a call, as it is after the call.
template <size_t Index, typename Arguments>
std::string showArgument(HandleNames& names, const Arguments& arguments) {
  using Type = std::tuple_element_t<Index, Arguments>;
  const auto value = std::get<Index>(arguments);
  if constexpr (std::is_same_v<Type, wchar_t*>) {
    return text::escaped(value, static_cast<size_t>(std::max(0, std::get<Index - 1>(arguments))));
  } else if constexpr (std::is_convertible_v<Type, const velq::DeviceInformation*>) {
    return show(value);
  } else if constexpr (std::is_same_v<Type, const int32_t*>) {
    return show(value, std::get<Index - 1>(arguments));
  } else if constexpr (std::is_same_v<Type, int32_t*>) {
    // A count that is filled is the parameter before the values that it counts.
    using Previous = std::tuple_element_t<Index - 1, Arguments>;
    if constexpr (std::is_same_v<Previous, int32_t*>) return show(value, *std::get<Index - 1>(arguments));
    return std::to_string(*value);
  } else if constexpr (std::is_same_v<Type, int64_t*>) {
    return std::to_string(*value);
  } else if constexpr (std::is_same_v<Type, uint32_t*>) {
    static_assert(Index == 3 && std::is_same_v<std::tuple_element_t<0, Arguments>, velq::CalibrationItem*>,
                  "only the codes of CalibrationItem_getState are known to be 15");
    return showCodes(value);
  } else {
    return show(names, value);
  }
}

/// All arguments, separated by commas.
template <typename... Parameters>
std::string showArguments(HandleNames& names, const std::tuple<Parameters...>& arguments) {
  std::string shown;
  [&]<size_t... Index>(std::index_sequence<Index...>) {
    ((shown += (Index == 0 ? "" : ", ") + showArgument<Index>(names, arguments)), ...);
  }
  (std::index_sequence_for<Parameters...>());
  return shown;
}

/// The result of the call that had `arguments`.
template <typename Result, typename... Parameters>
std::string showResult(HandleNames& names, const Result& result, const std::tuple<Parameters...>& arguments) {
  if constexpr (std::is_same_v<Result, void*>) {
    // Of an untyped element only array and index are known; its kind is known with its first use as a handle.
    if (result == nullptr) return "null";
    return show(names, std::get<0>(arguments)) + "[" + std::to_string(std::get<1>(arguments)) + "]";
  } else {
    return show(names, result);
  }
}

}  // namespace probe
