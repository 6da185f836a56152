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
  /// The process's simulation, created from the environment at its first use. A rig that cannot be read is reported;
  /// there are no devices then.
  static Simulation& instance();

  /// `rigPath` empty: the built-in rig.
  Simulation(const std::string& rigPath, const StatePlace& statePlace);

  /// Whether the rig could be read.
  bool hasRig() const { return hasRig_; }

  /// Reads what other processes changed. Returns false without a rig and, after a report, when the state cannot be
  /// used; the devices are then as they were read last, or as in the rig.
  bool refresh();

  /// The numbers of all devices as they are listed: in the order of the rig, then the fusion devices that commands
  /// created, by number.
  std::vector<int32_t> numbers() const;

  /// Whether there is a device, or a fusion device, with this number.
  bool exists(int32_t number) const { return isFusion(number) || rig_.hasBoard(number); }
  bool isFusion(int32_t number) const { return groups_.contains(number); }

  /// The number of the device that `number` names, 0 or above, or, with -1, the first listed one with this
  /// description, which may be null. Nothing when there is no such device. Reads what other processes changed.
  std::optional<int32_t> select(int32_t number, const wchar_t* description);

  /// The number of the first listed device with exactly this description; nothing when there is none.
  std::optional<int32_t> findDescription(const std::string& description) { return descriptions().find(description); }

  /// Whether a device other than `number` has exactly this description.
  bool isUsedByAnother(const std::string& description, int32_t number) {
    return descriptions().isUsedByAnother(description, number);
  }

  /// The devices before all changes; none without a rig.
  const Rig& rig() const { return rig_; }

  /// The device in the rig; null for a fusion device that a command created, and when there is no such device.
  const Device* rigDevice(int32_t number) const { return rig_.find(number); }

  // The functions below take the number of an existing device, and chips and items that it has in the rig.

  /// Valid until the next change or refresh.
  const std::string& description(int32_t number) const;
  int32_t boardId(int32_t number) const;
  int32_t productId(int32_t number) const;
  FirmwareVersion firmwareVersion(int32_t number, size_t chip) const;
  uint32_t codeInUse(int32_t number, const Item& item, uint32_t rigCode) const;

  /// Children as they are listed; empty when `number` is no fusion device.
  std::vector<int32_t> children(int32_t number) const { return groups_.children(number); }

  /// The fusion device that the device belongs to; nothing when to none.
  std::optional<int32_t> groupOf(int32_t number) const { return groups_.groupOf(number); }

  /// Adds to `changes` those that revert all changes of the device.
  void revertAll(int32_t number, std::vector<StateChange>& changes) const;

  /// Saves the changes that `decide` collects, all or none. `decide` sees all devices as they are now while no other
  /// process can write; a status other than Success refuses the changes and is returned. Returns ErrorNotSaved, after a
  /// report, when the state cannot be written.
  ErrorCode change(const std::function<ErrorCode(std::vector<StateChange>& changes)>& decide);

  /// Holds a device against other processes, once it is sure that the state can be written, until `release` has been
  /// called as often as `hold` returned Success. Returns ErrorDeviceBusy when another process holds the device,
  /// ErrorNotSaved when the state cannot be written.
  ErrorCode hold(int32_t number);

  /// Reverts one `hold`.
  void release(int32_t number);

  /// Success when no other process holds the device, else as `hold`.
  ErrorCode checkFree(int32_t number);

 private:
  const StateValue* changed(int32_t number, const Item& item) const;
  int64_t changedNumber(int32_t number, const Item& item, int64_t otherwise) const;
  DescriptionIndex& descriptions();
  DescriptionIndex indexed() const;
  void rebuildDerived();
  void applyOwnChanges(const std::vector<StateChange>& changes);
  ErrorCode reportState(const std::string& problem) const;
  ErrorCode guard(const std::function<ErrorCode()>& action) const;

  Rig rig_;
  bool hasRig_ = false;
  StateFile file_;
  State state_;
  StateContents contents_;
  std::string mismatch_;                          ///< why the state is not of this rig; empty when it is
  Groups groups_;                                 ///< of rig_ and contents_
  std::optional<DescriptionIndex> descriptions_;  ///< of all devices as they are now; created when first needed
};

}  // namespace simulator
