// Changes of descriptions: done or refused, never in between, persistent, and restored.
#include <algorithm>
#include <string>
#include <vector>

#include "compliance/checks/changed_device.h"
#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

struct Candidate {
  std::wstring text;
  bool isImpossible;  ///< has to be refused
};

// Of one and more characters, of one to four bytes each in UTF-8, with leading, double and trailing spaces, and around
// the longest that is allowed.
std::vector<Candidate> candidatesFor(const std::wstring& own) {
  std::vector<Candidate> candidates = {{own, false},
                                       {L"velq-compliance 1", false},
                                       {L"velq-compliance 2", false},
                                       {L"v", false},
                                       {L"velq \u00e9\u03a9\u4e2d\U0001F50C", false},
                                       {L"  velq  compliance,#0 ", false},
                                       {std::wstring(62, L'v'), false},
                                       {std::wstring(63, L'w'), false},
                                       {L"", true},
                                       {std::wstring(64, L'x'), true},
                                       {std::wstring(300, L'y'), true}};
  for (const std::wstring& taken : listedDescriptions())
    if (taken != own) candidates.push_back({taken, true});
  // One neighbour shows as much as all of them.
  candidates.resize(std::min<size_t>(candidates.size(), 12));
  return candidates;
}

ErrorCode setDescription(DeviceCtrl* device, const std::wstring& text, bool countsTerminator) {
  return DeviceCtrl_setDescription(device, static_cast<int32_t>(text.size()) + countsTerminator, text.c_str());
}

// The description of one device, and the way to change it.
class Renaming {
 public:
  explicit Renaming(ChangedDevice& device) : device_(device), present_(descriptionOf(device.handle())) {}

  /// Returns whether the library has taken it.
  bool tryOut(const Candidate& candidate, bool countsTerminator) {
    const ErrorCode status = setDescription(device_.handle(), candidate.text, countsTerminator);
    const std::string change = "a change to " + show(candidate.text) +
                               (countsTerminator ? "" : ", terminator not counted") + ", with status " + show(status);
    device_.expect(status != Success || !candidate.isImpossible, "takes " + show(candidate.text));
    const bool isTaken = status == Success && !candidate.isImpossible;
    const std::wstring before = present_;
    if (isTaken) setPresent(candidate.text);
    device_.look(change);
    if (isTaken) expectReachable(before, change);
    return isTaken;
  }

  void restore(const std::wstring& own) {
    const ErrorCode status = setDescription(device_.handle(), own, true);
    device_.expect(status == Success, "the old description is refused, status " + show(status));
    setPresent(own);
  }

 private:
  void setPresent(const std::wstring& text) {
    present_ = text;
    device_.want(descriptionFact(device_.number()), show(text));
    device_.want(listedFact(device_.number()), show(text));
  }

  void expectReachable(const std::wstring& before, const std::string& change) {
    const OpenDevice opened = openDevice(present_);
    device_.expect(opened != nullptr && DeviceCtrl_getDeviceNumber(opened.get()) == device_.number(),
                   "cannot be opened as " + show(present_) + " after " + change);
    if (before != present_)
      device_.expect(openDevice(before) == nullptr, "can still be opened as " + show(before) + " after " + change);
  }

  ChangedDevice& device_;
  std::wstring present_;
};

void expectRecord(ChangedDevice& device, Scenario scenario, DaqCtrlBase* control) {
  if (control == nullptr) return;
  DeviceInformation record{};
  DaqCtrlBase_getSelectedDevice(control, &record);
  record.Description[DescriptionCapacity - 1] = 0;
  device.expect(record.Description == descriptionOf(device.handle()), "is described " + show(record.Description) +
                                                                          " in the record of a " + nameOf(scenario) +
                                                                          " that was bound before the change");
}

void changeDescriptions(ChangedDevice& device) {
  const std::wstring own = descriptionOf(device.handle());
  Array* const listedBefore = DeviceCtrl_getInstalledDevices();
  const std::vector<std::wstring> before = descriptionsIn(listedBefore);
  const OpenDevice openedBefore = openDevice(device.number(), nullptr);
  const OpenControl firmware = openControl(ScenarioFirmware, device.number());
  const OpenControl calibration = openControl(ScenarioCalibration, device.number());

  Renaming renaming(device);
  int taken = 0;
  bool countsTerminator = true;
  for (const Candidate& candidate : candidatesFor(own)) {
    // Tools count the terminator when they rename, and do not when they create a fusion device.
    taken += renaming.tryOut(candidate, countsTerminator);
    countsTerminator = !countsTerminator;
  }
  if (taken == 0) return device.refuse();
  device.lookAround("changes of the description");
  expectRecord(device, ScenarioFirmware, firmware.get());
  expectRecord(device, ScenarioCalibration, calibration.get());
  device.expect(
      descriptionOf(openedBefore.get()) == descriptionOf(device.handle()),
      "is described " + show(descriptionOf(openedBefore.get())) + " in a handle that was open before the change");
  device.expect(descriptionsIn(listedBefore) == before, "a list that was returned before the change has changed");
  renaming.restore(own);
  device.lookAround("the old description was restored");
}

}  // namespace

void checkDescriptionChanges(const CheckContext& context, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* handle, const std::string& where) {
    ChangedDevice device(handle, where, context, findings);
    changeDescriptions(device);
  });
}

}  // namespace compliance
