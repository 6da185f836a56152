// The devices as they are now: the rig, overlaid with what the state says has changed.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/model/description_index.h"
#include "simulator/model/groups.h"
#include "simulator/model/status.h"
#include "simulator/rig/rig.h"
#include "simulator/state/state.h"

namespace simulator {

class Simulation {
 public:
  /// The process's simulation, made from the environment at its first use. A rig that cannot be read is reported and
  /// leaves no devices.
  static Simulation& instance();

  /// `rigPath` empty: the built-in rig.
  Simulation(const std::string& rigPath, const StatePlace& statePlace);

  /// Whether there is a rig at all.
  bool hasRig() const { return hasRig_; }

  /// Takes in what other processes changed. Returns false where there is no rig and, after a report, where the state
  /// cannot be used, which then counts as empty.
  bool refresh();

  /// The numbers of all devices as they are listed: in the order of the rig, then the fusion devices that commands
  /// created, by number.
  std::vector<int32_t> numbers() const;

  /// Whether there is a device, or a fusion device, with this number.
  bool exists(int32_t number) const { return isFusion(number) || rig_.hasBoard(number); }
  bool isFusion(int32_t number) const { return groups_.contains(number); }

  /// The number of the device that `number` names, 0 or above, or, with -1, the first listed one with this
  /// description, which may be null. Nothing when there is no such device. Takes in what other processes changed.
  std::optional<int32_t> select(int32_t number, const wchar_t* description);

  /// The number of the first listed device with exactly this description; -1 when there is none.
  int32_t findDescription(const std::string& description) { return descriptions().find(description); }

  /// Whether a device other than `number` has exactly this description.
  bool isBorneByAnother(const std::string& description, int32_t number) {
    return descriptions().isBorneByAnother(description, number);
  }

  /// The devices before all changes; none without a rig.
  const Rig& rig() const { return rig_; }

  /// What the rig says of the device; null for a fusion device that a command made, and for none.
  const Device* rigDevice(int32_t number) const { return rig_.find(number); }

  // What follows takes the number of an existing device, and chips and items that its rig gives.

  /// Valid until the next change or refresh.
  const std::string& description(int32_t number) const;
  int32_t boardId(int32_t number) const;
  int32_t productId(int32_t number) const;
  FirmwareVersion firmwareVersion(int32_t number, size_t chip) const;
  uint32_t codeInUse(int32_t number, const std::string& item, uint32_t rigCode) const;

  /// Children as they are listed; empty when `number` is no fusion device.
  std::vector<int32_t> children(int32_t number) const { return groups_.children(number); }

  /// The fusion device that the device belongs to; -1 when to none.
  int32_t groupOf(int32_t number) const { return groups_.groupOf(number); }

  /// Adds to `changes` what takes back all that was changed of the device.
  void undoAll(int32_t number, std::vector<StateChange>& changes) const;

  /// Keeps the changes that `decide` collects, all or none. `decide` sees all devices as they are now, held against
  /// other writers; a status other than Success refuses and is returned. Returns ErrorNotKept, after a report, when the
  /// state cannot be written.
  ErrorCode change(const std::function<ErrorCode(std::vector<StateChange>& changes)>& decide);

  /// Holds a device against other processes, once it is sure that the state can be written. ErrorDeviceBusy when one of
  /// them holds it, ErrorNotKept when the state cannot be written.
  ErrorCode hold(int32_t number);
  void release(int32_t number);

  /// Success when no other process holds the device, else as `hold`.
  ErrorCode checkFree(int32_t number);

 private:
  const StateValue* changed(int32_t number, const std::string& item) const;
  int64_t changedNumber(int32_t number, const std::string& item, int64_t otherwise) const;
  DescriptionIndex& descriptions();
  void derive();
  void followUp(const std::vector<StateChange>& changes);
  ErrorCode reportState(const std::string& problem) const;
  ErrorCode guard(const std::function<ErrorCode()>& action) const;

  Rig rig_;
  bool hasRig_ = false;
  StateFile file_;
  State state_;
  StateContents contents_;
  std::string mismatch_;                          ///< how the state shows that it is not of this rig; empty when it is
  Groups groups_;                                 ///< of rig_ and contents_
  std::optional<DescriptionIndex> descriptions_;  ///< of all devices as they are; made when first needed
};

}  // namespace simulator
