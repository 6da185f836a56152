// The list of installed devices: complete, stable, and every description in it opens one device.
#include <map>
#include <set>
#include <string>
#include <vector>

#include "compliance/check.h"
#include "compliance/devices.h"
#include "compliance/rules.h"
#include "compliance/snapshot.h"

namespace compliance {

namespace {

constexpr const char* TheList = "list of installed devices";

}  // namespace

void expectDistinctDevices(Findings& findings) {
  std::set<std::wstring> seen;
  for (const std::wstring& description : listedDescriptions()) {
    const std::string where = placeOf(description) + " in the " + TheList;
    findings.expect(!description.empty(), "an empty description", where);
    findings.expect(description.size() < DescriptionCapacity,
                    std::to_string(description.size()) + " characters, more than the 63 that a record holds", where);
    findings.expect(seen.insert(description).second, "two devices of one description", where);
  }
}

namespace {

void checkList(const Bench&, Findings& findings) {
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
  findings.expect(descriptionsIn(devices) == descriptions, "is another when a new one has been asked for", TheList);
}

void checkOpening(const Bench&, Findings& findings) {
  std::map<int32_t, std::string> places;
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    findings.expect(number >= 0, "has the number " + std::to_string(number), where);
    const auto [first, isNew] = places.emplace(number, where);
    findings.expect(isNew, "has the number " + std::to_string(number) + " of " + first->second, where);
  });
}

// Kept for the last of the checks that read.
void lookFirst(const Bench& bench, Findings&) { bench.firstLook.append(textOf(takeSnapshot())); }

constexpr Check List[] = {{"device-list", "complete-tables", checkList},
                          {"open-listed", "device-list", checkOpening},
                          {"first-look", "open-listed", lookFirst}};

}  // namespace

const Checks DeviceChecks = List;

}  // namespace compliance
