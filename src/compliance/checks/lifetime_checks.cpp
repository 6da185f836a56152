// What stays as it is while other devices and controls are open, asked, and disposed of.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/items.h"
#include "compliance/devices/snapshot.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

// Enough to get in each other's way.
constexpr size_t MostAtOnce = 32;

std::vector<OpenDevice> openSome() {
  std::vector<OpenDevice> devices;
  for (const std::wstring& description : listedDescriptions()) {
    if (devices.size() == MostAtOnce) break;
    if (OpenDevice device = openDevice(description)) devices.push_back(std::move(device));
  }
  return devices;
}

void expectFacts(DeviceCtrl* device, const Snapshot& wanted, Findings& findings, const std::string& when) {
  const std::string difference = firstDifference(wanted, factsOf(device));
  findings.expect(difference.empty(), difference, when);
}

void expectBoundFacts(int32_t number, const Snapshot& wanted, Findings& findings) {
  for (const Scenario scenario : Scenarios)
    if (const OpenControl control = openControl(scenario, number))
      expectFacts(DaqCtrlBase_getDevice(control.get()), wanted, findings, "as the device of a " + nameOf(scenario));
}

// Something that the library returned, and how it reads.
struct Kept {
  std::string what;
  std::function<std::string()> read;
  std::string value;
};

class KeptThings {
 public:
  void keep(const std::string& what, std::function<std::string()> read) {
    const std::string value = read();
    things_.push_back({what, std::move(read), value});
  }

  void keepText(const std::string& what, const wchar_t* text) {
    keep(what, [text] { return show(text); });
  }

  template <typename Value>
  void keepValues(const std::string& what, Array* array) {
    if (array == nullptr) return;
    const std::vector<void*> elements = elementsOf(array);
    keep(what, [=] {
      std::string text = elementsOf(array) == elements ? "" : "elsewhere: ";
      for (const void* const element : elements) text += std::to_string(*static_cast<const Value*>(element)) + " ";
      return text;
    });
  }

  // Of handles nothing but where they lie.
  void keepHandles(const std::string& what, Array* array) {
    if (array == nullptr) return;
    const std::vector<void*> elements = elementsOf(array);
    keep(what, [=] { return std::string(elementsOf(array) == elements ? "as before" : "other handles"); });
  }

  void expectAll(Findings& findings, const std::string& when) const {
    for (const Kept& thing : things_) {
      const std::string now = thing.read();
      findings.expect(now == thing.value, thing.what + " reads " + now + ", not " + thing.value, when);
    }
  }

 private:
  std::vector<Kept> things_;
};

void keepItems(KeptThings& things, Scenario scenario, DaqCtrlBase* control, const std::string& where) {
  const auto keepArray = [&](Array* array, const std::string& kind, const std::string& place) {
    things.keepHandles(where + ": " + place + (place.empty() ? "" : ", ") + "list of every " + kind, array);
    return true;
  };
  const auto keepString = [&](const auto& get, const char* what, const std::string& place) {
    things.keepText(where + ": " + place + ", " + what, get());
  };
  visitItems(scenario, control, {.array = keepArray, .string = keepString});
}

std::vector<OpenControl> keepControls(KeptThings& things, const std::vector<OpenDevice>& devices) {
  std::vector<OpenControl> controls;
  for (const OpenDevice& device : devices) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device.get());
    for (const Scenario scenario : Scenarios) {
      OpenControl control = openControl(scenario, number);
      if (control == nullptr) continue;
      const std::string where = nameOf(scenario) + " of device " + std::to_string(number);
      keepItems(things, scenario, control.get(), where);
      DaqCtrlBase* const kept = control.get();
      things.keep(where + ": its device", [kept] { return textOf(factsOf(DaqCtrlBase_getDevice(kept))); });
      controls.push_back(std::move(control));
    }
  }
  return controls;
}

}  // namespace

void checkSideBySide(const CheckContext&, Findings& findings) {
  std::vector<Snapshot> alone;
  for (const OpenDevice& device : openSome()) {
    const OpenDevice only = openDevice(DeviceCtrl_getDeviceNumber(device.get()), nullptr);
    alone.push_back(factsOf(only.get()));
    const int32_t number = DeviceCtrl_getDeviceNumber(device.get());
    if (const OpenDevice fusing = openDevice(number, nullptr, AccessFusion))
      expectFacts(fusing.get(), alone.back(), findings, "when opened with AccessFusion");
    expectBoundFacts(number, alone.back(), findings);
  }
  std::vector<OpenDevice> devices = openSome();
  std::vector<OpenDevice> twins = openSome();
  if (!findings.expect(devices.size() == alone.size() && twins.size() == alone.size(),
                       "cannot all be opened while others are open", "listed devices"))
    return;
  // Backwards, so that the device that was opened last is not the one that is read first.
  for (size_t i = devices.size(); i-- > 0;)
    expectFacts(devices[i].get(), alone[i], findings, "while other devices are open");
  for (size_t i = 0; i < devices.size(); ++i) {
    twins[i].reset();
    expectFacts(devices[i].get(), alone[i], findings, "after another opening of it was disposed of");
    if (i > 0) devices[i - 1].reset();
    expectFacts(devices[i].get(), alone[i], findings, "after another device was disposed of");
  }
}

void checkReturned(const CheckContext&, Findings& findings) {
  KeptThings ofDevices, ofControls;
  std::vector<OpenDevice> devices = openSome();
  for (const OpenDevice& device : devices) {
    const std::string where = "device " + std::to_string(DeviceCtrl_getDeviceNumber(device.get()));
    ofDevices.keepValues<uint64_t>(where + ": base addresses", DeviceCtrl_getBaseAddresses(device.get()));
    ofDevices.keepValues<int32_t>(where + ": interrupts", DeviceCtrl_getInterrupts(device.get()));
  }
  Array* const list = DeviceCtrl_getInstalledDevices();
  const std::vector<std::wstring> listed = descriptionsIn(list);
  std::vector<OpenControl> controls = keepControls(ofControls, devices);
  takeSnapshot();
  ofDevices.expectAll(findings, "after all other operations");
  ofControls.expectAll(findings, "after all other operations");
  devices.clear();
  takeSnapshot();
  ofControls.expectAll(findings, "after the opened devices were disposed of");
  findings.expect(descriptionsIn(list) == listed, "the list of installed devices reads otherwise",
                  "after all other operations");
}

// What a control returned before it is bound again stays as it is.
void checkReturnedBefore(const CheckContext&, Findings& findings) {
  std::vector<int32_t> numbers = listedNumbers();
  if (!numbers.empty()) numbers.push_back(numbers.front());  // where there is one device, too
  for (const Scenario scenario : Scenarios) {
    OpenControl control;
    KeptThings things;
    for (const int32_t number : numbers) {
      const DeviceInformation record = recordFor(number, L"");
      if (control == nullptr)
        control = openControl(scenario, number);
      else
        DaqCtrlBase_setSelectedDevice(control.get(), &record);
      if (control == nullptr) continue;
      const std::string where = nameOf(scenario) + " bound to device " + std::to_string(number);
      keepItems(things, scenario, control.get(), where);
      things.expectAll(findings, "after the control was bound to device " + std::to_string(number));
    }
  }
}

// Since the first of all, and also in the next process.
void checkUnchanged(const CheckContext& context, Findings& findings) {
  const std::string difference = firstDifference(context.before, takeSnapshot());
  findings.expect(difference.empty(), difference, "although nothing was done but reading");
  const std::string next = firstDifference(context.before, context.next.look());
  findings.expect(next.empty(), next, "in the next process, although nothing was done but reading");
}

}  // namespace compliance
