// How every change is looked at: what it was to do is there, and nothing else is.
#pragma once

#include "compliance/checks/check.h"

namespace compliance {

/// An opened device, the changes of it, and what has to be found after each.
class ChangedDevice {
 public:
  ChangedDevice(DeviceCtrl* device, const CheckContext& context, const Findings& here);

  DeviceCtrl* handle() const { return device_; }
  int32_t number() const { return number_; }
  const Findings& findings() const { return here_; }

  /// From now on this has to be found.
  void wantDescription(const std::wstring& text);
  void wantBoardId(int32_t id) { wanted_[boardIdFact(number_)] = std::to_string(id); }

  /// Changes the description or the board id, which has to be found from now on if the library takes it: with Success,
  /// and a board id also with a warning. Returns the library's status.
  ErrorCode rename(const std::wstring& text, bool countsTerminator = true);
  ErrorCode renumber(int32_t id);

  /// Looks whether the device is as wanted, in a new handle and in this one.
  void look(const std::string& after) const;

  /// Looks whether all devices are as wanted, in this process and in the next. With many devices only the changed one
  /// is looked at, except for the first and the last that is changed.
  void lookAround(const std::string& after) const;

 private:
  DeviceCtrl* const device_;
  const CheckContext& context_;
  const Findings here_;
  const int32_t number_;
  Snapshot wanted_;
};

/// Changes each listed device.
void changeEach(const CheckContext& context, const std::function<void(ChangedDevice& device)>& change);

}  // namespace compliance
