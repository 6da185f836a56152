// All that can be read of the devices, to see whether anything has changed.
#pragma once

#include <map>

#include "compliance/devices/devices.h"

namespace compliance {

/// Values as texts, each by the fact's name, such as "device 3: board id".
using Snapshot = std::map<std::string, std::string>;

/// Of everything that is listed.
Snapshot takeSnapshot();

/// All that one device returns of itself.
Snapshot factsOf(DeviceCtrl* device);

/// What a control returns of the chips or solutions of the device with this number.
Snapshot itemFactsOf(Scenario scenario, DaqCtrlBase* control, int32_t number);

/// The name of the fact about the list itself.
inline constexpr const char* OrderFact = "order of the list";

/// The names of the facts that changes are about. The first is of the list, all others of the device.
std::string listedFact(int32_t number);
std::string descriptionFact(int32_t number);
std::string boardIdFact(int32_t number);
std::string childrenFact(int32_t number);

/// The facts of one device, as factsOf() returns them.
Snapshot factsAbout(int32_t number, Snapshot snapshot);

/// What is left of a snapshot without a device, and without the order of the list.
Snapshot without(int32_t number, Snapshot snapshot);

/// What a fact was wanted to be and is; "nothing" where there is none.
struct Difference {
  std::string wanted;
  std::string found;
};

/// All facts that are not as wanted.
std::map<std::string, Difference> differences(const Snapshot& wanted, const Snapshot& found);

/// Expects all facts to be as wanted.
void expectSame(const Snapshot& wanted, const Snapshot& found, const Findings& here);

/// The numbers in a fact: by default those of the devices, in the order of the list.
std::vector<int32_t> numbersIn(const Snapshot& snapshot, const std::string& fact = OrderFact);

/// A snapshot as a text without zeros, and back.
std::string textOf(const Snapshot& snapshot);
Snapshot snapshotOf(const std::string& text);

}  // namespace compliance
