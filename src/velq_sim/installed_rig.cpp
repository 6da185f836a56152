#include "velq_sim/installed_rig.h"

#include <cstdio>
#include <map>
#include <set>
#include <utility>

#include "text/utf8.h"
#include "velq_sim/device_reader.h"
#include "velq_sim/failure.h"
#include "velq_sim/installed_library.h"

namespace velq_sim {

namespace {

using namespace Automation::Velq;
using simulator::Device;

// Leaves out children that a rig cannot have, and fusion devices without any.
class FusionRepair {
 public:
  explicit FusionRepair(simulator::Rig& rig) : rig_(rig) {
    for (Device& device : rig.devices) {
      if (device.children) std::erase_if(*device.children, [&](int32_t child) { return !keep(device, child); });
    }
    std::erase_if(rig.devices, [](const Device& device) {
      const bool isEmpty = device.children && device.children->empty();
      if (isEmpty) reportDevice(text::fromUtf8(device.description), "is a fusion device without children, left out");
      return isEmpty;
    });
    rig.positions.clear();
    for (size_t i = 0; i < rig.devices.size(); ++i) rig.positions.emplace(rig.devices[i].number, i);
  }

 private:
  bool keep(const Device& fusion, int32_t number) {
    const Device* const child = rig_.find(number);
    const char* problem = nullptr;
    if (child == nullptr)
      problem = "is not listed";
    else if (child->children)
      problem = "is a fusion device";
    else if (!taken_.insert(number).second)
      problem = "belongs to another fusion device";
    else if (child->productId != models_.emplace(fusion.number, child->productId).first->second)
      problem = "has another product id than the first child";
    if (problem != nullptr)
      reportDevice(text::fromUtf8(fusion.description),
                   "child " + std::to_string(number) + " " + problem + ", left out");
    return problem == nullptr;
  }

  simulator::Rig& rig_;
  std::set<int32_t> taken_;
  std::map<int32_t, int32_t> models_;  ///< product id of the first child, by fusion device
};

// Leaves out the product ids of fusion devices, which a rig takes from their children.
void dropFusionProductIds(simulator::Rig& rig) {
  for (Device& device : rig.devices) {
    if (!device.children) continue;
    const int32_t own = std::exchange(device.productId, 0);
    if (own != rig.find(device.children->front())->productId)
      reportDevice(text::fromUtf8(device.description),
                   "product id " + std::to_string(own) + ": replaced by that of the first child");
  }
}

}  // namespace

simulator::Rig readInstalledRig() {
  loadInstalledLibrary();
  Array* const list = DeviceCtrl_getInstalledDevices();
  if (list == nullptr) throw Failure(Failed, "the device library returns no list of devices");
  const std::vector<std::wstring> descriptions = reading::descriptionsIn(list);
  if (descriptions.empty()) throw Failure(Failed, "the device library lists no devices");
  for (const Scenario scenario : {ScenarioFirmware, ScenarioCalibration}) {
    if (reading::OpenControl(DaqCtrlBase_Create(scenario)) == nullptr)
      fprintf(stderr, "velq-sim: the device library cannot create a %s, left out\n", nameOf(scenario).c_str());
  }
  simulator::Rig rig;
  for (const std::wstring& description : descriptions) {
    DeviceReader reader(description);
    const std::optional<int32_t> number = reader.open();
    if (!number) continue;
    if (rig.positions.emplace(*number, rig.devices.size()).second)
      rig.devices.push_back(reader.read());
    else
      reportDevice(description, "opens device " + std::to_string(*number) + ", which is listed before; left out");
  }
  FusionRepair{rig};
  dropFusionProductIds(rig);
  if (rig.devices.empty()) throw Failure(Failed, "the device library lists no device that can be read");
  return rig;
}

}  // namespace velq_sim
