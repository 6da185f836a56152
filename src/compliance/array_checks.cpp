// Arrays stay as they are for as long as what they were asked of.
#include <utility>
#include <vector>

#include "compliance/check.h"
#include "compliance/devices.h"
#include "compliance/rules.h"

namespace compliance {

namespace {

// Far beyond any list of devices.
constexpr int32_t MostElements = 10'000'000;

}  // namespace

bool expectStable(Array* array, Findings& findings, const std::string& where) {
  if (array == nullptr) return true;
  const int32_t length = Array_getLength(array);
  const std::string count = std::to_string(length);
  if (!findings.expect(length >= 0 && length <= MostElements, "length " + count, where)) return false;
  const int32_t again = Array_getLength(array);
  if (!findings.expect(again == length, "length " + count + ", and " + std::to_string(again) + " when asked again",
                       where))
    return false;
  const std::vector<void*> elements = elementsOf(array);
  return findings.expect(std::cmp_equal(elements.size(), length),
                         "element " + std::to_string(elements.size()) + " of " + count + " is null", where) &&
         findings.expect(elementsOf(array) == elements, "other addresses when asked again", where) &&
         findings.expect(Array_getLength(array) == length, "another length after its elements were asked for", where);
}

namespace {

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

constexpr Check List[] = {{"array-base-addresses", "open-listed", checkValues<uint64_t, DeviceCtrl_getBaseAddresses>},
                          {"array-interrupts", "open-listed", checkValues<int32_t, DeviceCtrl_getInterrupts>}};

}  // namespace

const Checks ArrayChecks = List;

}  // namespace compliance
