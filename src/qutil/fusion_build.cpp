#include "qutil/fusion_build.h"

#include <velq/velq.h>

#include <cstdio>
#include <cwchar>

#include "operations/conversion.h"
#include "operations/fusion.h"

using namespace Automation::Velq;

namespace {

// Quirk: the device is looked up by a string that is not its description: four bytes of that become one character, low
// byte first. Hardly a device has such a name, so "/dd:Name -fusion child" creates a new fusion device even if Name
// exists. A name of one letter is found, because it becomes itself.
WideString lookupText(const std::string& description) {
  std::wstring characters((description.size() + 3) / 4, 0);
  for (size_t i = 0; i < description.size(); ++i) {
    const auto byte = static_cast<uint32_t>(static_cast<unsigned char>(description[i]));
    characters[i / 4] = static_cast<wchar_t>(static_cast<uint32_t>(characters[i / 4]) | byte << (8 * (i % 4)));
  }
  WideString text{};
  swprintf(text.data(), text.size() - 1, L"%S", characters.c_str());
  return text;
}

int createFusionDevice(const NamedChildren& children, const std::string& description) {
  int32_t number = 0;
  const ErrorCode status = CvxFusionDeviceCreate(children.count(), children.numbers.data(), &number);
  if (status == ErrorCannotFuse) {
    printf("Specified devices can not be fused!(ErroeLevel = %d)\n", 3);
    return -1;
  }
  if (status == Success) {
    printf("Create fusion device %s successfully\n", description.c_str());
    const std::string names = children.names.substr(0, children.names.find_last_not_of(' ') + 1);
    printf("%s fused devices:%s\n", description.c_str(), names.c_str());
  }
  // Quirk: after any other status, too, with the `number` that the library left, usually 0.
  DeviceCtrl* const device = DeviceCtrl_Create(number, nullptr, AccessFusion);
  if (device == nullptr) {
    puts("get device failed,devCtrl is NULL.");
    return -1;
  }
  const WideString wide = widen(description);
  // Quirk: the other changes of a description count the terminator.
  DeviceCtrl_setDescription(device, static_cast<int32_t>(std::wcslen(wide.data())), wide.data());
  DeviceCtrl_dispose(device);
  return 0;
}

}  // namespace

int buildFusionDevice(int argc, char** argv, const std::string& description) {
  DeviceCtrl* const existing = DeviceCtrl_Create(-1, lookupText(description).data(), AccessFusion);
  NamedChildren children = findNamedChildren(argc, argv);
  if (existing == nullptr) return createFusionDevice(children, description);
  FusionDeviceAddChildren(DeviceCtrl_getDeviceNumber(existing), children.count(), children.numbers.data(), {},
                          children.names, description);
  DeviceCtrl_dispose(existing);
  return 0;
}
