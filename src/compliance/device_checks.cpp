// What is listed can be opened, and nothing else can.
#include <algorithm>
#include <string>
#include <utility>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

void checkList(const Bench&, Findings& findings) {
  Array* const devices = DeviceCtrl_getInstalledDevices();
  const std::string where = "list of installed devices";
  if (!findings.expect(devices != nullptr, "null", where)) return;
  const int32_t length = Array_getLength(devices);
  findings.expect(length > 0, "no device to check", where);
  const std::vector<std::wstring> descriptions = listedDescriptions();
  findings.expect(std::cmp_equal(descriptions.size(), length),
                  "element " + std::to_string(descriptions.size()) + " of " + std::to_string(length) + " is null",
                  where);
}

void checkOpenByDescription(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    findings.expect(number >= 0, "has the number " + std::to_string(number), where);
    const std::wstring description = descriptionOf(device);
    findings.expect(placeOf(description) == where, "is described " + show(description.c_str()) + " when opened", where);
  });
}

void checkOpenByNumber(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t number = DeviceCtrl_getDeviceNumber(device);
    const std::string asked = "number " + std::to_string(number);
    // The description counts only where the number is -1.
    for (const wchar_t* const description : {static_cast<const wchar_t*>(nullptr), L"", UnknownDescription}) {
      const std::string call = asked + " with description " + show(description);
      const OpenDevice opened = openDevice(number, description);
      if (!findings.expect(opened != nullptr, call + " does not open it", where)) continue;
      const std::wstring answer = descriptionOf(opened.get());
      findings.expect(DeviceCtrl_getDeviceNumber(opened.get()) == number && placeOf(answer) == where,
                      call + " opens " + show(answer.c_str()), where);
    }
  });
}

void checkOpenUnknown(const Bench&, Findings& findings) {
  struct Unknown {
    int32_t number;
    const wchar_t* description;
  };
  const std::vector<std::wstring> listed = listedDescriptions();
  for (const auto& [number, description] :
       {Unknown{UnknownNumber, nullptr}, {-2, nullptr}, {-1, nullptr}, {-1, L""}, {-1, UnknownDescription}}) {
    // A device may well bear an empty description.
    if (description != nullptr && std::count(listed.begin(), listed.end(), description) > 0) continue;
    const OpenDevice device = openDevice(number, description);
    findings.expect(device == nullptr, "opens a device that is not there",
                    "DeviceCtrl_Create(" + std::to_string(number) + ", " + show(description) + ")");
  }
}

constexpr Check List[] = {{"device-list", checkList},
                          {"open-by-description", checkOpenByDescription},
                          {"open-by-number", checkOpenByNumber},
                          {"open-unknown", checkOpenUnknown}};

}  // namespace

const Checks DeviceChecks = List;

}  // namespace compliance
