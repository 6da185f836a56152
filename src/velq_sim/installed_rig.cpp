#include "velq_sim/installed_rig.h"

#include <cstdio>
#include <set>

#include "text/utf8.h"
#include "velq_sim/device_reader.h"
#include "velq_sim/failure.h"
#include "velq_sim/installed_library.h"

namespace velq_sim {

namespace {

using namespace Automation::Velq;
using simulator::Device;

void report(const Device& device, const std::string& message) {
  reportDevice(text::fromUtf8(device.description), message);
}

// Why a rig cannot have the device as a child beside `siblings`; null when it can. `taken` has all children so far.
const char* problemWithChild(const simulator::Rig& rig, int32_t number, const std::vector<int32_t>& siblings,
                             const std::set<int32_t>& taken) {
  const Device* const child = rig.find(number);
  if (child == nullptr) return "is not listed";
  if (child->children) return "is a fusion device";
  if (taken.contains(number)) return "belongs to a fusion device already";
  if (!siblings.empty() && child->productId != rig.find(siblings.front())->productId)
    return "has another product id than the first child";
  return nullptr;
}

// Leaves out children that a rig cannot have.
void repairChildren(simulator::Rig& rig) {
  std::set<int32_t> taken;
  for (Device& device : rig.devices) {
    if (!device.children) continue;
    std::vector<int32_t> kept;
    for (const int32_t number : *device.children) {
      if (const char* const problem = problemWithChild(rig, number, kept, taken)) {
        report(device, "child " + std::to_string(number) + " " + problem + ", left out");
      } else {
        kept.push_back(number);
        taken.insert(number);
      }
    }
    device.children = kept;
  }
}

// A rig has no fusion device without children.
void dropEmptyGroups(simulator::Rig& rig) {
  for (Device& device : rig.devices) {
    if (!device.children || !device.children->empty()) continue;
    device.children.reset();
    report(device, "is a fusion device without children; on the copy it is a plain device");
  }
}

// Leaves out product ids that a rig has unless another is given.
void dropUsualProductIds(simulator::Rig& rig) {
  for (Device& device : rig.devices) {
    const int32_t usual = device.children ? rig.find(device.children->front())->productId.value_or(0) : 0;
    if (device.productId == usual) device.productId.reset();
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
    // Reported once here: the reader of each device would repeat it.
    if (reading::OpenControl(DaqCtrlBase_Create(scenario)) == nullptr)
      fprintf(stderr, "velq-sim: the device library cannot create a %s, left out\n", nameOf(scenario).c_str());
  }
  simulator::Rig rig;
  for (const std::wstring& description : descriptions) {
    DeviceReader reader(description);
    const std::optional<int32_t> number = reader.open();
    if (!number) continue;
    // Of several devices with one description the library can open only one by it.
    if (rig.positions.emplace(*number, rig.devices.size()).second)
      rig.devices.push_back(reader.read());
    else
      reportDevice(description, "opens device " + std::to_string(*number) + ", which is listed before; left out");
  }
  // In this order: a repair can leave a group empty, and the usual product id of a group is that of a child it keeps.
  repairChildren(rig);
  dropEmptyGroups(rig);
  dropUsualProductIds(rig);
  if (rig.devices.empty()) throw Failure(Failed, "the device library lists no device that can be read");
  return rig;
}

}  // namespace velq_sim
