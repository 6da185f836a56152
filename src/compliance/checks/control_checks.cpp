// Scenario controls: what they are bound to. A library may refuse to make one, and to bind it.
#include <algorithm>

#include "compliance/checks/check.h"

namespace compliance {

namespace {

// Filled beforehand, so that what is left out and what is written behind it shows.
struct GuardedRecord {
  GuardedRecord() { std::fill_n(reinterpret_cast<wchar_t*>(this), sizeof *this / sizeof(wchar_t), Filler); }
  bool isGuardIntact() const { return std::count(std::begin(guard), std::end(guard), Filler) == std::ssize(guard); }

  DeviceInformation record;
  wchar_t guard[64];
};

std::string shown(const DeviceInformation& record) {
  return "record of number " + std::to_string(record.DeviceNumber) + ", mode " + std::to_string(record.OpenMode) +
         ", module index " + std::to_string(record.ModuleIndex) + ", description " +
         text::escaped(record.Description, DescriptionCapacity);
}

void expectUnbound(Scenario scenario, DaqCtrlBase* control, const Findings& here) {
  here.expect(DaqCtrlBase_getDevice(control) == nullptr, "has a device although it is not bound");
  here.expect(itemsOf(scenario, control) == nullptr, "has chips or solutions although it is not bound");
  GuardedRecord answer;
  const ErrorCode status = DaqCtrlBase_getSelectedDevice(control, &answer.record);
  here.expect(failed(status), "returns the record of a device although it is not bound, status " + show(status));
  here.expect(answer.isGuardIntact(), "writes behind the record");
}

void expectNoBinding(Scenario scenario, DaqCtrlBase* control, const DeviceInformation& record,
                     const Findings& findings) {
  const Findings here = findings.at(nameOf(scenario) + ", " + shown(record));
  const ErrorCode status = DaqCtrlBase_setSelectedDevice(control, &record);
  here.expect(failed(status), "is bound to a device that is not there, status " + show(status));
  expectUnbound(scenario, control, here);
}

void expectBound(DaqCtrlBase* control, const DeviceInformation& wanted, const Findings& here) {
  GuardedRecord answer;
  const ErrorCode status = DaqCtrlBase_getSelectedDevice(control, &answer.record);
  here.expect(!failed(status), "status " + show(status) + " for the record of the bound device");
  here.expect(answer.isGuardIntact(), "writes behind the record");
  here.expect(shown(answer.record) == shown(wanted), "has the " + shown(answer.record) + ", not the " + shown(wanted));
  DeviceCtrl* const device = DaqCtrlBase_getDevice(control);
  if (!here.expect(device != nullptr, "has no device although it is bound")) return;
  here.expect(DaqCtrlBase_getDevice(control) == device, "has another device when requested again");
  here.expect(DeviceCtrl_getDeviceNumber(device) == wanted.DeviceNumber && descriptionOf(device) == wanted.Description,
              "has another device, " + show(descriptionOf(device)));
}

// Binds a new control to the device and looks at it. Returns whether the library lets it be bound.
bool tryBinding(Scenario scenario, const DeviceInformation& record, const DeviceInformation& answer,
                const Findings& here) {
  const OpenControl control(DaqCtrlBase_Create(scenario));
  if (control == nullptr) return false;
  const bool isBound = !failed(DaqCtrlBase_setSelectedDevice(control.get(), &record));
  if (isBound)
    expectBound(control.get(), answer, here);
  else
    expectUnbound(scenario, control.get(), here);
  return isBound;
}

// A control that was bound to other devices before is bound, and returns chips or solutions, as a new one.
void expectAsNew(Scenario scenario, DaqCtrlBase* control, int32_t number, bool isBound, const Findings& here) {
  const OpenControl other = openControl(scenario, number);
  here.expect(isBound == (other != nullptr), isBound ? "is bound, but a new control is not" : "is refused");
  if (!isBound) return expectUnbound(scenario, control, here);
  const OpenDevice device = openDevice(number, nullptr);
  expectBound(control, recordFor(number, descriptionOf(device.get())), here);
  if (other != nullptr)
    expectSame(itemFactsOf(scenario, other.get(), number), itemFactsOf(scenario, control, number), here);
}

}  // namespace

void checkUnboundControl(const CheckContext& context) {
  for (const Scenario scenario : Scenarios) {
    const Findings here = context.findings.at(nameOf(scenario));
    const OpenControl control(DaqCtrlBase_Create(scenario)), other(DaqCtrlBase_Create(scenario));
    here.expect(control == nullptr || control != other, "is the one that was made before");
    if (control == nullptr)
      here.refuse();
    else
      expectUnbound(scenario, control.get(), here);
  }
}

void checkControlOfUnknown(const CheckContext& context) {
  const std::wstring known = listedDescriptions().front();
  std::set<int32_t> numbers = unusedNumbers();
  numbers.insert(-2);
  for (const Scenario scenario : Scenarios) {
    const OpenControl control(DaqCtrlBase_Create(scenario));
    if (control == nullptr) continue;
    for (const int32_t number : numbers)
      expectNoBinding(scenario, control.get(), recordFor(number, known), context.findings);
    for (const wchar_t* const description : {L"", UnknownDescription})
      expectNoBinding(scenario, control.get(), recordFor(-1, description), context.findings);
  }
}

// By number with any description, by description, and in both modes.
void checkBinding(const CheckContext& context) {
  forEachDevice(context.findings, [](DeviceCtrl* device, const Findings& place) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    const std::wstring description = descriptionOf(device);
    const DeviceInformation whole = recordFor(number, description);
    const DeviceInformation forFusion = recordFor(number, description, AccessFusion);
    for (const Scenario scenario : Scenarios) {
      const Findings here = place.at(nameOf(scenario));
      const bool isTaken = tryBinding(scenario, whole, whole, here);
      if (!isTaken) here.refuse();
      for (const DeviceInformation& record :
           {recordFor(-1, description), recordFor(number, L""), recordFor(number, UnknownDescription)})
        here.expect(tryBinding(scenario, record, whole, here) == isTaken,
                    "is bound by number and description, but not by the " + shown(record) + ", or otherwise");
      tryBinding(scenario, forFusion, forFusion, here);
    }
  });
}

// A control that is bound again serves the new device, and none if it is refused.
void checkRebinding(const CheckContext& context) {
  for (const Scenario scenario : Scenarios) {
    const auto visit = [&](DaqCtrlBase* control, int32_t number, bool isBound) {
      const Findings here = context.findings.at(nameOf(scenario) + " bound again, device " + std::to_string(number));
      expectAsNew(scenario, control, number, isBound, here);
    };
    if (const OpenControl control = bindToEach(scenario, visit))
      expectNoBinding(scenario, control.get(), recordFor(UnknownNumber, L""), context.findings);
  }
}

}  // namespace compliance
