#include "compliance/checks/changed_device.h"

namespace compliance {

ChangedDevice::ChangedDevice(DeviceCtrl* device, const std::string& where, const CheckContext& context,
                             Findings& findings)
    : device_(device),
      where_(where),
      context_(context),
      findings_(findings),
      number_(DeviceCtrl_getDeviceNumber(device)),
      wanted_(takeSnapshot()) {}

void ChangedDevice::look(const std::string& after) {
  expectWanted(takeSnapshot(), "after " + after);
  Snapshot seen = wanted_;
  for (const auto& [fact, value] : factsOf(device_)) seen[fact] = value;
  expectWanted(seen, "in the changed handle after " + after);
}

void ChangedDevice::lookInNextProcess(const std::string& after) {
  expectWanted(context_.next.look(), "in the next process after " + after);
}

void ChangedDevice::expectWanted(const Snapshot& found, const std::string& when) {
  const std::string difference = firstDifference(wanted_, found);
  expect(difference.empty(), difference + ", " + when);
}

}  // namespace compliance
