// The chips and calibrations that controls return, down to their last string.
#pragma once

#include "compliance/devices/devices.h"

namespace compliance {

/// What to do with what a control returns. Places are such as "chip 0" and "solution 0, section 1, item 2".
struct ItemVisitor {
  /// An array of `kind`, such as "chip". Returns whether to visit its elements.
  std::function<bool(Array* array, const std::string& kind, const std::string& place)> array;

  /// A string, such as "version". `get` gets it from the library, each time again.
  std::function<void(const std::function<const wchar_t*()>& get, const char* what, const std::string& place)> string;

  /// Each chip and each calibration item itself.
  std::function<void(FirmwareItem* chip, const std::string& place)> chip = [](auto*, auto&) {};
  std::function<void(CalibrationItem* item, const std::string& place)> item = [](auto*, auto&) {};
};

/// Visits the chips or the solutions of a control, as its scenario has it. A null array has no elements.
void visitItems(Scenario scenario, DaqCtrlBase* control, const ItemVisitor& visitor);

}  // namespace compliance
