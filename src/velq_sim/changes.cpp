#include "velq_sim/changes.h"

#include <cstdio>
#include <optional>
#include <string>

#include "simulator/model/simulation.h"
#include "simulator/state/environment.h"
#include "text/escaped.h"
#include "text/one_line.h"
#include "text/utf8.h"

namespace velq_sim {

namespace {

using simulator::Device;

std::string quoted(const std::string& description) { return text::escaped(text::fromUtf8(description).c_str()); }

std::string groupName(std::optional<int32_t> group) { return group ? std::to_string(*group) : "none"; }

// Each calibration item, and its code in use.
std::vector<std::pair<simulator::Item, uint32_t>> codesOf(const std::vector<simulator::Solution>& solutions) {
  std::vector<std::pair<simulator::Item, uint32_t>> codes;
  for (size_t i = 0; i < solutions.size(); ++i) {
    for (size_t k = 0; k < solutions[i].sections.size(); ++k) {
      const auto& items = solutions[i].sections[k].items;
      for (size_t j = 0; j < items.size(); ++j) codes.emplace_back(simulator::calibrationItem(i, k, j), items[j].inUse);
    }
  }
  return codes;
}

// Compares one device with what its rig says.
void showDevice(const simulator::Simulation& now, int32_t number, std::optional<int32_t> rigGroup) {
  const auto line = [number](const std::string& item, const std::string& old, const std::string& current) {
    if (old == current) return;
    printf("device %d: %s %s -> %s\n", number, item.c_str(), text::oneLine(old).c_str(),
           text::oneLine(current).c_str());
  };
  const Device* const listed = now.rigDevice(number);
  const bool exists = now.exists(number);
  line("description", listed == nullptr ? "none" : quoted(listed->description),
       exists ? quoted(now.description(number)) : "none");
  if (!exists) return;
  // A fusion device that a command created has neither chips nor codes.
  const Device rig = listed == nullptr ? Device() : *listed;
  line("board id", std::to_string(rig.boardId), std::to_string(now.boardId(number)));
  for (size_t i = 0; hasItem(rig, simulator::firmwareItem(i)); ++i)
    line(nameOf(simulator::firmwareItem(i)), simulator::shown((*rig.firmware)[i].version),
         simulator::shown(now.firmwareVersion(number, i)));
  for (const auto& [item, code] : codesOf(rig.calibration.value_or(std::vector<simulator::Solution>())))
    line(nameOf(item), text::hexadecimal(code), text::hexadecimal(now.codeInUse(number, item, code)));
  line("fusion device", groupName(rigGroup), groupName(now.groupOf(number)));
}

}  // namespace

bool showChanges() {
  simulator::Simulation now(simulator::rigPathFromEnvironment(), simulator::statePlaceFromEnvironment());
  if (!now.refresh()) return false;
  // With an empty state: the groups before all changes.
  const simulator::Groups rigGroups(now.rig(), {});
  const auto show = [&](int32_t number) { showDevice(now, number, rigGroups.groupOf(number)); };
  // Not numbers() alone, which leaves out dissolved fusion devices of the rig.
  for (const Device& device : now.rig().devices) show(device.number);
  for (const int32_t number : now.numbers()) {
    if (now.rigDevice(number) == nullptr) show(number);
  }
  return true;
}

}  // namespace velq_sim
