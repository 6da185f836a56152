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
using simulator::Simulation;

std::string quoted(const std::string& description) { return text::escaped(text::fromUtf8(description).c_str()); }

std::string groupName(std::optional<int32_t> group) { return group ? std::to_string(*group) : "none"; }

// Compares one device with what its rig says.
class DeviceChanges {
 public:
  DeviceChanges(const Simulation& simulation, int32_t number) : simulation_(simulation), number_(number) {}

  void show(const Device* rig, std::optional<int32_t> rigGroup) const {
    const bool exists = simulation_.exists(number_);
    line("description", rig == nullptr ? "none" : quoted(rig->description),
         exists ? quoted(simulation_.description(number_)) : "none");
    if (!exists) return;
    line("board id", std::to_string(rig == nullptr ? 0 : rig->boardId), std::to_string(simulation_.boardId(number_)));
    // A fusion device that a command created has neither chips nor codes.
    if (rig != nullptr && rig->firmware) showFirmware(*rig->firmware);
    if (rig != nullptr && rig->calibration) showCodes(*rig->calibration);
    line("fusion device", groupName(rigGroup), groupName(simulation_.groupOf(number_)));
  }

 private:
  void line(const std::string& item, const std::string& old, const std::string& now) const {
    if (old != now)
      printf("device %d: %s %s -> %s\n", number_, item.c_str(), text::oneLine(old).c_str(), text::oneLine(now).c_str());
  }

  void showFirmware(const std::vector<simulator::Chip>& chips) const {
    for (size_t i = 0; i < chips.size(); ++i)
      line(nameOf(simulator::firmwareItem(i)), simulator::shown(chips[i].version),
           simulator::shown(simulation_.firmwareVersion(number_, i)));
  }

  void showCodes(const std::vector<simulator::Solution>& solutions) const {
    for (size_t i = 0; i < solutions.size(); ++i) {
      for (size_t k = 0; k < solutions[i].sections.size(); ++k) {
        const auto& items = solutions[i].sections[k].items;
        for (size_t j = 0; j < items.size(); ++j) {
          const simulator::Item item = simulator::calibrationItem(i, k, j);
          line(nameOf(item), text::hexadecimal(items[j].inUse),
               text::hexadecimal(simulation_.codeInUse(number_, item, items[j].inUse)));
        }
      }
    }
  }

  const Simulation& simulation_;
  const int32_t number_;
};

}  // namespace

bool showChanges() {
  Simulation simulation(simulator::rigPathFromEnvironment(), simulator::statePlaceFromEnvironment());
  if (!simulation.refresh()) return false;
  // With an empty state: the groups before all changes.
  const simulator::Groups rigGroups(simulation.rig(), {});
  const auto show = [&](int32_t number) {
    DeviceChanges(simulation, number).show(simulation.rigDevice(number), rigGroups.groupOf(number));
  };
  // Not numbers() alone, which leaves out dissolved fusion devices of the rig.
  for (const Device& device : simulation.rig().devices) show(device.number);
  for (const int32_t number : simulation.numbers()) {
    if (simulation.rigDevice(number) == nullptr) show(number);
  }
  return true;
}

}  // namespace velq_sim
