// The library's list of installed devices.
#pragma once

#include <velq/velq.h>

/// The description of element `index`, which may be longer than a record has room for; null when the library gives no
/// such element. It belongs to the library.
inline const wchar_t* installedDescription(Automation::Velq::Array* devices, int32_t index) {
  const auto* const node = static_cast<const char*>(Automation::Velq::Array_getItem(devices, index));
  if (node == nullptr) return nullptr;
  return reinterpret_cast<const wchar_t*>(node + offsetof(Automation::Velq::InstalledDeviceNode, Description));
}
