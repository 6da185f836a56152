// Arrays stay as they are for as long as what they were asked of.
#include "compliance/array_checks.h"

#include <utility>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

bool expectStable(Array* array, Findings& findings, const std::string& where) {
  if (array == nullptr) return true;
  const int32_t length = Array_getLength(array);
  const std::vector<void*> elements = elementsOf(array);
  const std::string count = std::to_string(length);
  if (!findings.expect(length >= 0, "length " + count, where)) return false;
  return findings.expect(std::cmp_equal(elements.size(), length),
                         "element " + std::to_string(elements.size()) + " of " + count + " is null", where) &&
         findings.expect(Array_getLength(array) == length, "another length when asked again", where) &&
         findings.expect(elementsOf(array) == elements, "other addresses when asked again", where);
}

namespace {

void checkInstalledDevices(const Bench&, Findings& findings) {
  const std::string where = "list of installed devices";
  Array* const devices = DeviceCtrl_getInstalledDevices();
  if (!expectStable(devices, findings, where)) return;
  const std::vector<void*> nodes = elementsOf(devices);
  const std::vector<std::wstring> descriptions = listedDescriptions();
  forEachDevice(findings, [](DeviceCtrl* device, const std::string&) { descriptionOf(device); });
  findings.expect(elementsOf(devices) == nodes, "other addresses after other calls", where);
  findings.expect(listedDescriptions() == descriptions, "other descriptions after other calls", where);
}

template <typename Value>
std::vector<Value> valuesOf(Array* array) {
  std::vector<Value> values;
  for (const void* const value : elementsOf(array)) values.push_back(*static_cast<const Value*>(value));
  return values;
}

template <typename Value, Array* (*Getter)(DeviceCtrl*)>
void checkValues(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    Array* const array = Getter(device);
    if (!expectStable(array, findings, where)) return;
    const std::vector<Value> values = valuesOf<Value>(array);
    descriptionOf(device);
    Array* const again = Getter(device);
    findings.expect((again == nullptr) == (array == nullptr), "once null and once not", where);
    findings.expect(valuesOf<Value>(array) == values, "other values after other calls", where);
    findings.expect(valuesOf<Value>(again) == values, "other values when asked for again", where);
  });
}

constexpr Check List[] = {{"array-installed-devices", checkInstalledDevices},
                          {"array-base-addresses", checkValues<uint64_t, DeviceCtrl_getBaseAddresses>},
                          {"array-interrupts", checkValues<int32_t, DeviceCtrl_getInterrupts>}};

}  // namespace

const Checks ArrayChecks = List;

}  // namespace compliance
