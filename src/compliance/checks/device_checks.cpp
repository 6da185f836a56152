// The list of installed devices: complete, stable; what is in it can be opened by description and by number, and
// nothing else can.
#include <cwctype>

#include "base/descriptor.h"
#include "compliance/checks/check.h"
#include "compliance/process/guardian.h"

namespace compliance {

namespace {

// Far beyond any list of devices.
constexpr int32_t MostElements = 10'000'000;

void expectUnknown(int32_t number, const wchar_t* description, const Findings& findings) {
  findings.at("DeviceCtrl_Create(" + std::to_string(number) + ", " + show(description) + ")")
      .expect(openDevice(number, description) == nullptr, "opens a device that is not there");
}

// Descriptions near one that is there.
std::vector<std::wstring> variationsOf(const std::wstring& description) {
  std::wstring upper = description, lower = description;
  for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(c)));
  for (wchar_t& c : lower) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  const std::wstring shorter = description.substr(0, description.size() - 1);
  return {upper, lower, description + L"x", L" " + description, description + L" ", shorter};
}

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

void checkList(const CheckContext& context) {
  const Findings here = context.findings.at("list of installed devices");
  Array* const devices = DeviceCtrl_getInstalledDevices();
  if (!here.expect(devices != nullptr, "null") || !expectStable(devices, here)) return;
  const std::vector<std::wstring> descriptions = descriptionsIn(devices);
  here.expect(!descriptions.empty(), "no device to check");
  expectDistinctDevices(here);
  here.expect(listedDescriptions() == descriptions, "other devices when requested again");
  here.expect(descriptionsIn(devices) == descriptions, "changes when a new one is requested");
}

void checkOpening(const CheckContext& context) {
  std::map<int32_t, Findings> places;
  forEachDevice(context.findings, [&](DeviceCtrl* device, const Findings& here) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    const std::string what = "has the number " + std::to_string(number);
    here.expect(number >= 0, what);
    const auto [first, isNew] = places.emplace(number, here);
    here.expect(isNew, what + " of " + first->second.where());
  });
}

// The checker keeps it: for the last of the checks that read, and to restore what those that write leave altered.
void lookFirst(const CheckContext& context) {
  const bool isSent = base::writeAll(ResultDescriptor, textOf(takeSnapshot()));
  context.findings.at("in the process of the check").expect(isSent, "closes or changes what it did not open");
}

void checkOpeningByDescription(const CheckContext& context) {
  forEachDevice(context.findings, [](DeviceCtrl* device, const Findings& here) {
    const std::wstring description = descriptionOf(device);
    const std::string what = "is described " + show(description) + " when opened";
    if (!here.expect(placeOf(description) == here.where(), what)) return;
    const OpenDevice again = openDevice(-1, description.c_str(), AccessFusion);
    if (here.expect(again != nullptr, "cannot be opened with AccessFusion"))
      here.expect(DeviceCtrl_getDeviceNumber(again.get()) == DeviceCtrl_getDeviceNumber(device),
                  "is another device with AccessFusion");
  });
}

void checkOpeningByNumber(const CheckContext& context) {
  const std::vector<std::wstring> listed = listedDescriptions();
  forEachDevice(context.findings, [&](DeviceCtrl* device, const Findings& here) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    // The description counts only where the number is -1.
    for (const wchar_t* const description : {static_cast<const wchar_t*>(nullptr), L"", UnknownDescription,
                                             listed.front().c_str(), listed.back().c_str()}) {
      const std::string call = "number " + std::to_string(number) + " with description " + show(description);
      const OpenDevice opened = openDevice(number, description);
      if (!here.expect(opened != nullptr, call + " does not open it")) continue;
      const std::wstring answer = descriptionOf(opened.get());
      here.expect(DeviceCtrl_getDeviceNumber(opened.get()) == number && placeOf(answer) == here.where(),
                  call + " opens " + show(answer));
    }
  });
}

void checkUnknownDevice(const CheckContext& context) {
  const std::vector<std::wstring> listed = listedDescriptions();
  std::set<int32_t> numbers = unusedNumbers();
  numbers.insert({-2, INT32_MIN});
  for (const int32_t number : numbers)
    for (const wchar_t* const description : {static_cast<const wchar_t*>(nullptr), L"", listed.front().c_str()})
      expectUnknown(number, description, context.findings);
  // Without a number and without a description that any device has.
  for (const wchar_t* const description : {static_cast<const wchar_t*>(nullptr), L"", UnknownDescription})
    expectUnknown(-1, description, context.findings);
  const std::set<std::wstring> taken(listed.begin(), listed.end());
  for (const std::wstring& description : listed)
    for (const std::wstring& other : variationsOf(description))
      if (!taken.contains(other)) expectUnknown(-1, other.c_str(), context.findings);
}

}  // namespace compliance
