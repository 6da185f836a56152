#include "compliance/checks/changed_device.h"

namespace compliance {

namespace {

// Looking at all of more devices after each change of each would add hours.
constexpr size_t MostLookedAt = 16;

// A task of NextProcess.
std::string readOne(int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  return device == nullptr ? "" : textOf(factsOf(device.get()));
}

}  // namespace

ChangedDevice::ChangedDevice(DeviceCtrl* device, const CheckContext& context, const Findings& here)
    : device_(device),
      context_(context),
      here_(here),
      number_(DeviceCtrl_getDeviceNumber(device)),
      wanted_(context.before) {}

void ChangedDevice::wantDescription(const std::wstring& text) {
  wanted_[descriptionFact(number_)] = wanted_[listedFact(number_)] = show(text);
}

ErrorCode ChangedDevice::rename(const std::wstring& text, bool countsTerminator) {
  const ErrorCode status = setDescription(device_, text, countsTerminator);
  if (status == Success) wantDescription(text);
  return status;
}

ErrorCode ChangedDevice::renumber(int32_t id) {
  const ErrorCode status = DeviceCtrl_setBoardId(device_, id);
  if (!failed(status)) wantBoardId(id);
  return status;
}

void ChangedDevice::look(const std::string& after) const {
  const Snapshot wanted = factsAbout(number_, wanted_);
  const OpenDevice opened = openDevice(number_, nullptr);
  if (here_.expect(opened != nullptr, "cannot be opened after " + after))
    expectSame(wanted, factsOf(opened.get()), here_.at("after " + after));
  expectSame(wanted, factsOf(device_), here_.at("in the changed handle after " + after));
}

void ChangedDevice::lookAround(const std::string& after) const {
  const Findings there = here_.at("in the next process after " + after);
  const std::vector<int32_t> numbers = numbersIn(context_.before);
  if (numbers.size() <= MostLookedAt || number_ == numbers.front() || number_ == numbers.back()) {
    expectSame(wanted_, takeSnapshot(), here_.at("after " + after));
    expectSame(wanted_, context_.next.look(), there);
  } else {
    look(after);
    expectSame(factsAbout(number_, wanted_), snapshotOf(context_.next.perform({{readOne, number_}})), there);
  }
}

void changeEach(const CheckContext& context, const std::function<void(ChangedDevice&)>& change) {
  forEachDevice(context.findings, [&](DeviceCtrl* handle, const Findings& here) {
    ChangedDevice device(handle, context, here);
    change(device);
  });
}

}  // namespace compliance
