// What is listed can be opened by description and by number, and nothing else can.
#include <cwctype>
#include <set>
#include <string>

#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

void expectUnknown(int32_t number, const wchar_t* description, Findings& findings) {
  const OpenDevice device = openDevice(number, description);
  findings.expect(device == nullptr, "opens a device that is not there",
                  "DeviceCtrl_Create(" + std::to_string(number) + ", " + show(description) + ")");
}

// Descriptions near one that is there.
std::vector<std::wstring> variationsOf(const std::wstring& description) {
  std::wstring upper = description, lower = description;
  for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(c)));
  for (wchar_t& c : lower) c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
  return {upper,
          lower,
          description + L"x",
          L" " + description,
          description + L" ",
          description.substr(0, description.size() - 1)};
}

}  // namespace

void checkOpeningByDescription(const CheckContext&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const std::wstring description = descriptionOf(device);
    if (!findings.expect(placeOf(description) == where, "is described " + show(description) + " when opened", where))
      return;
    const OpenDevice again = openDevice(-1, description.c_str(), AccessFusion);
    if (findings.expect(again != nullptr, "cannot be opened with AccessFusion", where))
      findings.expect(DeviceCtrl_getDeviceNumber(again.get()) == DeviceCtrl_getDeviceNumber(device),
                      "is another device with AccessFusion", where);
  });
}

void checkOpeningByNumber(const CheckContext&, Findings& findings) {
  const std::vector<std::wstring> listed = listedDescriptions();
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    // The description counts only where the number is -1.
    for (const wchar_t* const description : {static_cast<const wchar_t*>(nullptr), L"", UnknownDescription,
                                             listed.front().c_str(), listed.back().c_str()}) {
      const std::string call = "number " + std::to_string(number) + " with description " + show(description);
      const OpenDevice opened = openDevice(number, description);
      if (!findings.expect(opened != nullptr, call + " does not open it", where)) continue;
      const std::wstring answer = descriptionOf(opened.get());
      findings.expect(DeviceCtrl_getDeviceNumber(opened.get()) == number && placeOf(answer) == where,
                      call + " opens " + show(answer), where);
    }
  });
}

void checkUnknownDevice(const CheckContext&, Findings& findings) {
  const std::vector<std::wstring> listed = listedDescriptions();
  std::set<int32_t> numbers = unusedNumbers();
  numbers.insert({-2, INT32_MIN});
  for (const int32_t number : numbers)
    for (const wchar_t* const description : {static_cast<const wchar_t*>(nullptr), L"", listed.front().c_str()})
      expectUnknown(number, description, findings);
  // Without a number and without a description that any device has.
  expectUnknown(-1, nullptr, findings);
  expectUnknown(-1, L"", findings);
  expectUnknown(-1, UnknownDescription, findings);
  const std::set<std::wstring> taken(listed.begin(), listed.end());
  for (const std::wstring& description : listed)
    for (const std::wstring& other : variationsOf(description))
      if (!taken.contains(other)) expectUnknown(-1, other.c_str(), findings);
}

}  // namespace compliance
