#include "operations/fusion.h"

#include <velq/velq.h>

#include <cstdio>

#include "operations/conversion.h"
#include "operations/environment_locale.h"
#include "operations/fusion_children.h"
#include "operations/library_text.h"
#include "operations/record.h"

using namespace Automation::Velq;

int QueryFusionDevInfo(DeviceInformation& device) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, device.OpenMode);
  if (opened == nullptr) {
    puts("devCtrl is null.");
    return -1;
  }
  const int32_t number = DeviceCtrl_getDeviceNumber(opened);
  if (device.DeviceNumber == -1) device.DeviceNumber = number;
  const bool isFusion = CvxIsFusionDevice(number) == Success;
  const LibraryText description = descriptionOf(opened);
  DeviceCtrl_dispose(opened);
  if (!isFusion) {
    printf("%S is not a fusion device.\n", description.data());
    return -1;
  }
  const std::optional<FusionChildren> children = childrenOf(device.DeviceNumber);
  if (!children) {
    // Quirk: without a line end.
    printf("QueryFusionDevInfo CvxFusionDeviceGetChildren failed!");
    return -1;
  }
  printf("%S fused devices:%S\n", description.data(), describe(*children).c_str());
  return 0;
}

// Quirk: the parameters without a name are not used.
int GetDeviceChildrenDevNum(int /*childCount*/, int* children, int argc, char** argv, std::wstring& /*wide*/,
                            std::string& names) {
  for (int i = 3; i < argc; ++i) {
    const DeviceInformation child = recordOf(argv[i]);
    names += argv[i];
    names += ' ';
    // Quirk: never released.
    DeviceCtrl* const opened = DeviceCtrl_Create(-1, child.Description, AccessDevice);
    if (opened == nullptr) return -1;
    children[i - 3] = DeviceCtrl_getDeviceNumber(opened);
  }
  return 0;
}

NamedChildren findNamedChildren(int argc, char** argv) {
  const int count = argc - 3;
  NamedChildren children{.numbers = std::vector<int>(static_cast<size_t>(count), -1), .names = {}};
  std::wstring wide;
  GetDeviceChildrenDevNum(count, children.numbers.data(), argc, argv, wide, children.names);
  return children;
}

int FusionDeviceAddChildren(int fusionNumber, int childCount, int* children, std::wstring /*wide*/, std::string names,
                            std::string description) {
  if (CvxFusionDeviceCheckChildren(fusionNumber, childCount, children) != Success) {
    printf("Specified devices can not be merged!(ErroeLevel = %d)\n", 3);
    return -1;
  }
  if (CvxFusionDeviceAddChildren(fusionNumber, childCount, children) != Success) {
    puts("CvxFusionDeviceAddChildren failed!");
    return -1;
  }
  // All children, those from before included.
  const std::optional<FusionChildren> all = childrenOf(fusionNumber);
  if (!all) {
    puts("CvxFusionDeviceGetChildren failed!");
    return -1;
  }
  const std::wstring report = describe(*all);
  printf("Merge %s to fusion device %s successfully.\n", names.c_str(), description.c_str());
  printf("%s fused devices:%S\n", description.c_str(), report.c_str());
  return 0;
}

int extendFusionDevice(int argc, char** argv, DeviceInformation& device) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, nullptr, device.OpenMode);
  if (opened == nullptr) {
    printf("Can not create a device without description!(ErrorLevel = %d)\n", 3);
    return -1;
  }
  const LibraryText wideDescription = descriptionOf(opened);
  DeviceCtrl_dispose(opened);
  std::string description;
  {
    const EnvironmentLocale locale;
    description = narrow(wideDescription.data());
  }
  NamedChildren children = findNamedChildren(argc, argv);
  FusionDeviceAddChildren(device.DeviceNumber, children.count(), children.numbers.data(), {}, children.names,
                          description);
  return 0;
}
