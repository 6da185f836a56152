// Changes of descriptions and board ids: done or refused, never in between, persistent, and restored.
#include <algorithm>

#include "compliance/checks/changed_device.h"

namespace compliance {

namespace {

// Of one and more characters, of one to four bytes each in UTF-8, with leading, double and trailing spaces, and around
// the longest that is allowed; and that of a neighbour, which shows as much as all of them.
std::vector<std::wstring> candidatesFor(const std::wstring& own) {
  std::vector<std::wstring> candidates = {own,
                                          L"velq-compliance 1",
                                          L"velq-compliance 2",
                                          L"v",
                                          L"velq \u00e9\u03a9\u4e2d\U0001F50C",
                                          L"  velq  compliance,#0 "};
  // Each of another letter, so that it shows when one is cut.
  for (const int length : {62, 63, 0, 64, 300})
    candidates.emplace_back(length, static_cast<wchar_t>(L'a' + length % 26));
  const std::vector<std::wstring> listed = listedDescriptions();
  const auto taken = std::find_if(listed.begin(), listed.end(), [&](const auto& text) { return text != own; });
  if (taken != listed.end()) candidates.push_back(*taken);
  return candidates;
}

// Whether it has to be refused: it is empty, longer than a record takes, or that of another device.
bool isImpossible(const std::wstring& text, int32_t number) {
  const OpenDevice device = openDevice(text);
  return text.empty() || text.size() >= DescriptionCapacity ||
         (device != nullptr && DeviceCtrl_getDeviceNumber(device.get()) != number);
}

// Returns whether the library has taken it; `present` is the description before, and then the new one.
bool tryDescription(ChangedDevice& device, std::wstring& present, const std::wstring& text, bool countsTerminator) {
  const bool isPossible = !isImpossible(text, device.number());
  const ErrorCode status = device.rename(text, countsTerminator);
  const std::string change = "a change to " + show(text) + (countsTerminator ? "" : ", terminator not counted") +
                             ", with status " + show(status);
  device.findings().expect(status != Success || isPossible, "takes " + show(text));
  device.look(change);
  if (status != Success) return false;
  const OpenDevice opened = openDevice(text);
  device.findings().expect(opened != nullptr && DeviceCtrl_getDeviceNumber(opened.get()) == device.number(),
                           "cannot be opened as " + show(text) + " after " + change);
  device.findings().expect(present == text || openDevice(present) == nullptr,
                           "can still be opened as " + show(present) + " after " + change);
  present = text;
  return true;
}

// Of a control that was bound before the change, and that the new description binds again.
void expectRecord(const ChangedDevice& device, Scenario scenario, DaqCtrlBase* control) {
  if (control == nullptr) return;
  DeviceInformation record{};
  DaqCtrlBase_getSelectedDevice(control, &record);
  record.Description[DescriptionCapacity - 1] = 0;
  device.findings().expect(record.Description == descriptionOf(device.handle()),
                           "is described " + show(record.Description) + " in the record of a " + nameOf(scenario) +
                               " that was bound before the change");
  const DeviceInformation named = recordFor(-1, descriptionOf(device.handle()));
  const ErrorCode status = DaqCtrlBase_setSelectedDevice(control, &named);
  device.findings().expect(!failed(status), "cannot be selected by the new description, status " + show(status));
}

// The device of a control, which is as good as one that was opened, where the library binds one.
DeviceCtrl* boundOr(const OpenControl& control, DeviceCtrl* device) {
  DeviceCtrl* const bound = control == nullptr ? nullptr : DaqCtrlBase_getDevice(control.get());
  return bound == nullptr ? device : bound;
}

void changeDescriptions(ChangedDevice& device) {
  const std::wstring own = descriptionOf(device.handle());
  Array* const listedBefore = DeviceCtrl_getInstalledDevices();
  const std::vector<std::wstring> before = descriptionsIn(listedBefore);
  const OpenDevice openedBefore = openDevice(device.number(), nullptr);
  const OpenControl firmware = openControl(ScenarioFirmware, device.number());
  const OpenControl calibration = openControl(ScenarioCalibration, device.number());
  const Findings& here = device.findings();

  std::wstring present = own;
  int taken = 0;
  bool countsTerminator = true;
  for (const std::wstring& text : candidatesFor(own)) {
    taken += tryDescription(device, present, text, countsTerminator);
    countsTerminator = !countsTerminator;
  }
  if (taken == 0) return here.refuse();
  device.lookAround("changes of the description");
  expectRecord(device, ScenarioFirmware, firmware.get());
  expectRecord(device, ScenarioCalibration, calibration.get());
  const std::wstring elsewhere = descriptionOf(openedBefore.get());
  here.expect(elsewhere == descriptionOf(device.handle()),
              "is described " + show(elsewhere) + " in a handle that was open before the change");
  here.expect(descriptionsIn(listedBefore) == before, "a list that was returned before the change has changed");
  const ErrorCode status = setDescription(boundOr(firmware, device.handle()), own);
  here.expect(status == Success, "the old description is refused, status " + show(status));
  device.wantDescription(own);
  device.lookAround("the old description was restored");
}

// Around where a board's highest id may lie, which is the board's own affair.
constexpr int32_t Candidates[] = {0,  1,  2,  3,   4,   6,     7,         8,  14,       15,
                                  16, 31, 32, 255, 256, 65536, INT32_MAX, -1, INT32_MIN};

// Returns whether the library has taken it.
bool tryBoardId(ChangedDevice& device, int32_t id) {
  const ErrorCode status = device.renumber(id);
  const std::string shown = std::to_string(id);
  device.findings().expect(failed(status) || id >= 0, "takes the board id " + shown);
  device.look("a change of the board id to " + shown + " with status " + show(status));
  return !failed(status);
}

void changeBoardIds(ChangedDevice& device) {
  const int32_t own = DeviceCtrl_getBoardId(device.handle());
  const OpenDevice openedBefore = openDevice(device.number(), nullptr);
  // First its own id, which every board that has settable ids takes.
  int taken = tryBoardId(device, own);
  for (const int32_t id : Candidates) taken += tryBoardId(device, id);
  if (taken == 0) return device.findings().refuse();
  const int32_t elsewhere = DeviceCtrl_getBoardId(openedBefore.get());
  device.findings().expect(
      elsewhere == DeviceCtrl_getBoardId(device.handle()),
      "has the board id " + std::to_string(elsewhere) + " in a handle that was open before the change");
  device.lookAround("changes of the board id");
  if (own < 0) return;
  const OpenControl control = openControl(ScenarioFirmware, device.number());
  const ErrorCode status = DeviceCtrl_setBoardId(boundOr(control, device.handle()), own);
  device.findings().expect(!failed(status), "the old board id is refused, status " + show(status));
  device.wantBoardId(own);
  device.lookAround("the old board id was restored");
}

}  // namespace

void checkDescriptionChanges(const CheckContext& context) { changeEach(context, changeDescriptions); }

void checkBoardIdChanges(const CheckContext& context) { changeEach(context, changeBoardIds); }

}  // namespace compliance
