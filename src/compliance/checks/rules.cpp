// Rules of lists that several checks look at.
#include "compliance/checks/check.h"

#include <utility>

namespace compliance {

using namespace Automation::Velq;

namespace {

// Far beyond any list of devices.
constexpr int32_t MostElements = 10'000'000;

}  // namespace

bool expectStable(Array* array, const Findings& here) {
  if (array == nullptr) return true;
  const int32_t length = Array_getLength(array);
  const std::string count = std::to_string(length);
  if (!here.expect(length >= 0 && length <= MostElements, "length " + count)) return false;
  const int32_t again = Array_getLength(array);
  if (!here.expect(again == length, "length " + count + ", and " + std::to_string(again) + " when requested again"))
    return false;
  const std::vector<void*> elements = elementsOf(array);
  return here.expect(std::cmp_equal(elements.size(), length),
                     "element " + std::to_string(elements.size()) + " of " + count + " is null") &&
         here.expect(elementsOf(array) == elements, "other addresses when requested again") &&
         here.expect(Array_getLength(array) == length, "another length after its elements were read");
}

void expectDistinctDevices(const Findings& here) {
  std::set<std::wstring> seen;
  for (const std::wstring& description : listedDescriptions()) {
    const Findings there = here.at(placeOf(description));
    there.expect(!description.empty(), "an empty description");
    there.expect(description.size() < DescriptionCapacity,
                 std::to_string(description.size()) + " characters, more than the 63 that a record holds");
    there.expect(seen.insert(description).second, "two devices of one description");
  }
}

}  // namespace compliance
