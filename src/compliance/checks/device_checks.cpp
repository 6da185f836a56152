// The list of installed devices: complete, stable, and every description in it opens one device.
#include <map>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "compliance/checks/check.h"
#include "compliance/checks/rules.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/snapshot.h"
#include "compliance/process/guardian.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

constexpr const char* TheList = "list of installed devices";

}  // namespace

void checkList(const CheckContext&, Findings& findings) {
  Array* const devices = DeviceCtrl_getInstalledDevices();
  if (!findings.expect(devices != nullptr, "null", TheList) || !expectStable(devices, findings, TheList)) return;
  const std::vector<std::wstring> descriptions = descriptionsIn(devices);
  findings.expect(!descriptions.empty(), "no device to check", TheList);
  expectDistinctDevices(findings);
  const auto count = [](size_t size) { return std::to_string(size) + " devices"; };
  const std::vector<std::wstring> again = listedDescriptions();
  findings.expect(again == descriptions,
                  count(again.size()) + " or their descriptions differ from the " + count(descriptions.size()) +
                      " of the call before",
                  TheList);
  findings.expect(descriptionsIn(devices) == descriptions, "changes when a new one is requested", TheList);
}

void checkOpening(const CheckContext&, Findings& findings) {
  std::map<int32_t, std::string> places;
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    findings.expect(number >= 0, "has the number " + std::to_string(number), where);
    const auto [first, isNew] = places.emplace(number, where);
    findings.expect(isNew, "has the number " + std::to_string(number) + " of " + first->second, where);
  });
}

// The checker keeps it: for the last of the checks that read, and to restore what those that write leave altered.
void lookFirst(const CheckContext&, Findings& findings) {
  const bool isSent = base::writeAll(ResultDescriptor, textOf(takeSnapshot()));
  findings.expect(isSent, "closes or changes what it did not open", "in the process of the check");
}

}  // namespace compliance
