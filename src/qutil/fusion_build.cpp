#include "qutil/fusion_build.h"

#include <velq/velq.h>

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <vector>

#include "base/conversion.h"
#include "operations/fusion.h"

using namespace Automation::Velq;

namespace {

// "%S" in a wide format takes wide text, so four bytes of the description make one character. No device bears such a
// name, and scripts depend on that: "/dd:Name -fusion child" makes a new fusion device even where Name exists. A name
// of one letter is found, though.
WideText lookupText(const std::string& description) {
  std::vector<wchar_t> characters(description.size() / sizeof(wchar_t) + 2);
  std::memcpy(characters.data(), description.data(), description.size());
  WideText text{};
  swprintf(text.data(), 256, L"%S", characters.data());
  return text;
}

int createFusionDevice(const std::vector<int32_t>& children, std::string names, const std::string& description) {
  int32_t number = 0;
  const ErrorCode status = CvxFusionDeviceCreate(static_cast<int32_t>(children.size()), children.data(), &number);
  if (status == ErrorCannotFuse) {
    printf("Specified devices can not be fused!(ErroeLevel = %d)\n", 3);
    return -1;
  }
  if (status == Success) {
    printf("Create fusion device %s successfully\n", description.c_str());
    names.erase(names.find_last_not_of(' ') + 1);
    printf("%s fused devices:%s\n", description.c_str(), names.c_str());
  }
  DeviceCtrl* const device = DeviceCtrl_Create(number, nullptr, AccessFusion);
  if (device == nullptr) {
    puts("get device failed,devCtrl is NULL.");
    return -1;
  }
  const WideText wide = widen(description);
  // Unlike the other description changes, this one does not count the terminator.
  DeviceCtrl_setDescription(device, static_cast<int32_t>(std::wcslen(wide.data())), wide.data());
  DeviceCtrl_dispose(device);
  return 0;
}

}  // namespace

int buildFusionDevice(int argc, char** argv, const std::string& description) {
  DeviceCtrl* const existing = DeviceCtrl_Create(-1, lookupText(description).data(), AccessFusion);
  const int childCount = argc - 3;
  std::vector<int32_t> children(static_cast<size_t>(childCount), -1);
  std::wstring wide;
  std::string names;
  GetDeviceChildrenDevNum(childCount, children.data(), argc, argv, wide, names);
  if (existing == nullptr) return createFusionDevice(children, names, description);
  FusionDeviceAddChildren(DeviceCtrl_getDeviceNumber(existing), childCount, children.data(), wide, names, description);
  DeviceCtrl_dispose(existing);
  return 0;
}
