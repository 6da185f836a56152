#include "compliance/checks/changed_device.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

// Looking at all of more devices after each change of each would add hours.
constexpr size_t MostLookedAt = 16;

// A task of NextProcess.
std::string readOne(int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  return device == nullptr ? "" : textOf(factsOf(device.get()));
}

}  // namespace

ChangedDevice::ChangedDevice(DeviceCtrl* device, const std::string& where, const CheckContext& context,
                             Findings& findings)
    : device_(device),
      where_(where),
      context_(context),
      findings_(findings),
      number_(DeviceCtrl_getDeviceNumber(device)),
      wanted_(context.before) {}

void ChangedDevice::look(const std::string& after) {
  const OpenDevice opened = openDevice(number_, nullptr);
  expect(opened != nullptr, "cannot be opened after " + after);
  if (opened != nullptr) expectWanted(factsOf(opened.get()), "after " + after);
  expectWanted(factsOf(device_), "in the changed handle after " + after);
}

void ChangedDevice::lookAround(const std::string& after) {
  const std::string there = "in the next process after " + after;
  if (!looksAtAll()) {
    look(after);
    expectWanted(snapshotOf(context_.next.perform({{readOne, number_}})), there);
    return;
  }
  const auto expectAll = [&](const Snapshot& found, const std::string& when) {
    const std::string difference = firstDifference(wanted_, found);
    expect(difference.empty(), difference + ", " + when);
  };
  expectAll(takeSnapshot(), "after " + after);
  expectAll(context_.next.look(), there);
}

bool ChangedDevice::looksAtAll() const {
  const std::vector<int32_t> numbers = numbersIn(context_.before);
  return numbers.size() <= MostLookedAt || number_ == numbers.front() || number_ == numbers.back();
}

void ChangedDevice::expectWanted(const Snapshot& found, const std::string& when) {
  const std::string difference = firstDifference(factsAbout(number_, wanted_), found);
  expect(difference.empty(), difference + ", " + when);
}

}  // namespace compliance
