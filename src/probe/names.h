// Names for handles: "DeviceCtrl#1", numbered as they appear, so that a trace is the same from run to run.
#pragma once

#include <velq/types.h>

#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace probe {

namespace velq = Automation::Velq;

/// The name for handles of this type. All scenario controls share one, that of the operation that creates them.
template <typename Handle>
constexpr const char* kindName() {
  if constexpr (std::is_base_of_v<velq::DaqCtrlBase, Handle>) return "DaqCtrlBase";
  if constexpr (std::is_same_v<Handle, velq::DeviceCtrl>) return "DeviceCtrl";
  if constexpr (std::is_same_v<Handle, velq::Array>) return "Array";
  if constexpr (std::is_same_v<Handle, velq::FirmwareItem>) return "FirmwareItem";
  if constexpr (std::is_same_v<Handle, velq::CalibrationSolution>) return "CalibrationSolution";
  if constexpr (std::is_same_v<Handle, velq::CalibrationSection>) return "CalibrationSection";
  if constexpr (std::is_same_v<Handle, velq::CalibrationItem>) return "CalibrationItem";
}

/// The names that handles have been given in this process.
class HandleNames {
 public:
  /// The name of a handle, a new one when the address has not been seen as this kind before; "null" for null. `kind` is
  /// a literal.
  std::string nameOf(const void* handle, const char* kind);

  /// Remembers that `handle` was obtained from `parent`.
  void adopt(const void* handle, const void* parent);

  /// Makes the next handle at this address, and at those of all handles obtained from it, a new one: the library may
  /// use an address again.
  void forget(const void* handle);

 private:
  std::unordered_map<const void*, std::map<std::string_view, int>> numbers_;  ///< by kind: objects can share an address
  std::unordered_map<const void*, const void*> parents_;
  std::unordered_map<const void*, std::vector<const void*>> children_;  ///< and those that have another parent now
  std::map<std::string_view, int> counts_;
};

}  // namespace probe
