// What stays as it is while other devices and controls are open, asked, and disposed of.

#include "compliance/checks/check.h"
#include "compliance/devices/items.h"

namespace compliance {

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

// All that each of those devices returns, alone, and in other ways of opening it.
std::vector<Snapshot> factsOfSome(const Findings& findings) {
  std::vector<Snapshot> alone;
  for (const OpenDevice& device : openSome()) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device.get());
    alone.push_back(factsOf(openDevice(number, nullptr).get()));
    if (const OpenDevice fusing = openDevice(number, nullptr, AccessFusion))
      expectSame(alone.back(), factsOf(fusing.get()), findings.at("when opened with AccessFusion"));
    for (const Scenario scenario : Scenarios)
      if (const OpenControl control = openControl(scenario, number))
        expectSame(alone.back(), factsOf(DaqCtrlBase_getDevice(control.get())),
                   findings.at("as the device of a " + nameOf(scenario)));
  }
  return alone;
}

// Something that the library returned.
struct Kept {
  std::string what;
  std::function<std::string()> read;
  std::string value = read();  // when it was returned
};

using KeptThings = std::vector<Kept>;

void expectUnchanged(const KeptThings& things, const Findings& here) {
  for (const auto& [what, read, value] : things) {
    const std::string now = read();
    here.expect(now == value, what + " reads " + now + ", not " + value);
  }
}

// Of handles, whose Value is void, nothing but where they lie.
template <typename Value>
void keepArray(KeptThings& things, const std::string& what, Array* array) {
  things.push_back({what, [array, elements = elementsOf(array)] {
                      std::string text = elementsOf(array) == elements ? "" : "elsewhere: ";
                      if constexpr (std::is_void_v<Value>)
                        text += std::to_string(elements.size()) + " handles";
                      else
                        for (const Value value : valuesOf<Value>(array)) text += std::to_string(value) + " ";
                      return text;
                    }});
}

void keepItems(KeptThings& things, Scenario scenario, DaqCtrlBase* control, const std::string& where) {
  const auto keepList = [&](Array* array, const std::string& kind, const std::string& place) {
    keepArray<void>(things, where + ": " + place + (place.empty() ? "" : ", ") + "list of every " + kind, array);
    return true;
  };
  const auto keepString = [&](const auto& get, const char* what, const std::string& place) {
    things.push_back({where + ": " + place + ", " + what, [text = get()] { return show(text); }});
  };
  visitItems(scenario, control, {.array = keepList, .string = keepString});
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
      things.push_back(
          {where + ": its device", [kept = control.get()] { return textOf(factsOf(DaqCtrlBase_getDevice(kept))); }});
      controls.push_back(std::move(control));
    }
  }
  return controls;
}

}  // namespace

void checkSideBySide(const CheckContext& context) {
  const std::vector<Snapshot> alone = factsOfSome(context.findings);
  std::vector<OpenDevice> devices = openSome(), twins = openSome();
  if (!context.findings.at("listed devices")
           .expect(devices.size() == alone.size() && twins.size() == alone.size(),
                   "cannot all be opened while others are open"))
    return;
  const auto expectFacts = [&](size_t i, const char* when) {
    expectSame(alone[i], factsOf(devices[i].get()), context.findings.at(when));
  };
  // Backwards, so that the device that was opened last is not the one that is read first.
  for (size_t i = devices.size(); i-- > 0;) expectFacts(i, "while other devices are open");
  for (size_t i = 0; i < devices.size(); ++i) {
    twins[i].reset();
    expectFacts(i, "after another opening of it was disposed of");
    if (i > 0) devices[i - 1].reset();
    expectFacts(i, "after another device was disposed of");
  }
}

void checkReturned(const CheckContext& context) {
  KeptThings ofDevices, ofControls;
  std::vector<OpenDevice> devices = openSome();
  for (const OpenDevice& device : devices) {
    const std::string where = "device " + std::to_string(DeviceCtrl_getDeviceNumber(device.get()));
    keepArray<uint64_t>(ofDevices, where + ": base addresses", DeviceCtrl_getBaseAddresses(device.get()));
    keepArray<int32_t>(ofDevices, where + ": interrupts", DeviceCtrl_getInterrupts(device.get()));
  }
  Array* const list = DeviceCtrl_getInstalledDevices();
  const std::vector<std::wstring> listed = descriptionsIn(list);
  std::vector<OpenControl> controls = keepControls(ofControls, devices);
  takeSnapshot();
  const Findings afterwards = context.findings.at("after all other operations");
  expectUnchanged(ofDevices, afterwards);
  expectUnchanged(ofControls, afterwards);
  devices.clear();
  takeSnapshot();
  expectUnchanged(ofControls, context.findings.at("after the opened devices were disposed of"));
  afterwards.expect(descriptionsIn(list) == listed, "the list of installed devices reads otherwise");
}

// What a control returned before it is bound again stays as it is.
void checkReturnedBefore(const CheckContext& context) {
  for (const Scenario scenario : Scenarios) {
    KeptThings things;
    bindToEach(scenario, [&](DaqCtrlBase* control, int32_t number, bool) {
      const std::string device = "bound to device " + std::to_string(number);
      keepItems(things, scenario, control, nameOf(scenario) + " " + device);
      expectUnchanged(things, context.findings.at("after the control was " + device));
    });
  }
}

// Since the first of all, and also in the next process.
void checkUnchanged(const CheckContext& context) {
  expectSame(context.before, takeSnapshot(), context.findings.at("although nothing was done but reading"));
  expectSame(context.before, context.next.look(),
             context.findings.at("in the next process, although nothing was done but reading"));
}

}  // namespace compliance
