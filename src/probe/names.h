// Names for handles: "DeviceCtrl#1", numbered as they appear, so that a trace is the same from run to run.
#pragma once

#include <velq/types.h>

#include <map>
#include <string>
#include <type_traits>
#include <unordered_map>

namespace probe {

using namespace Automation::Velq;

/// What handles of this type are called. All scenario controls share the name of what made them.
template <typename Handle>
constexpr const char* kindName() {
  using Type = std::remove_cv_t<Handle>;
  if (std::is_base_of_v<DaqCtrlBase, Type>) return "DaqCtrlBase";
  if (std::is_same_v<Type, DeviceCtrl>) return "DeviceCtrl";
  if (std::is_same_v<Type, Array>) return "Array";
  if (std::is_same_v<Type, FirmwareItem>) return "FirmwareItem";
  if (std::is_same_v<Type, CalibrationSolution>) return "CalibrationSolution";
  if (std::is_same_v<Type, CalibrationSection>) return "CalibrationSection";
  return "CalibrationItem";
}

/// The names that handles have been given in this process.
class HandleNames {
 public:
  /// The name of a handle, a new one when the address has not been seen as this kind before; "null" for null.
  std::string nameOf(const void* handle, const char* kind);

  /// Says that `handle` was asked of `owner`.
  void adopt(const void* handle, const void* owner) { owners_[handle] = owner; }

  /// Makes the next handle at this address, and at those of all that was asked of it, a new one: the library may use an
  /// address again.
  void forget(const void* handle);

 private:
  std::unordered_map<const void*, std::map<std::string, int>> numbers_;  ///< by kind: objects can share an address
  std::unordered_map<const void*, const void*> owners_;
  std::map<std::string, int> counts_;
};

}  // namespace probe
