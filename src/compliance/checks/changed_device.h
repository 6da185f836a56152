// How every change is looked at: what it was to do is there, and nothing else is.
#pragma once

#include <string>

#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/snapshot.h"

namespace compliance {

/// An opened device, the changes of it, and what has to be found after each.
class ChangedDevice {
 public:
  ChangedDevice(Automation::Velq::DeviceCtrl* device, const std::string& where, const CheckContext& context,
                Findings& findings);

  Automation::Velq::DeviceCtrl* handle() const { return device_; }
  int32_t number() const { return number_; }

  /// From now on the fact has to be found so.
  void want(const std::string& fact, const std::string& value) { wanted_[fact] = value; }

  /// Notes `what` unless the promise holds.
  bool expect(bool holds, const std::string& what) { return findings_.expect(holds, what, where_); }

  /// Looks whether the device is as wanted, in a new handle and in this one.
  void look(const std::string& after);

  /// Looks whether all devices are as wanted, in this process and in the next. With many devices only the changed one
  /// is looked at, except for the first and the last that is changed.
  void lookAround(const std::string& after);

  /// Notes that the device takes no change of this kind.
  void refuse() { findings_.refuse(where_); }

 private:
  /// Of the facts of this device.
  void expectWanted(const Snapshot& found, const std::string& when);
  bool looksAtAll() const;

  Automation::Velq::DeviceCtrl* const device_;
  const std::string where_;
  const CheckContext& context_;
  Findings& findings_;
  const int32_t number_;
  Snapshot wanted_;
};

}  // namespace compliance
