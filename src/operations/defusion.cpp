#include "operations/defusion.h"

#include <velq/velq.h>

#include <cstdio>

#include "operations/fusion_children.h"
#include "operations/library_text.h"

using namespace Automation::Velq;

int dissolveFusionDevice(DeviceInformation& device) {
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, AccessFusion);
  if (opened == nullptr) {
    // Quirk: without a line end.
    printf("get device failed,deviceCtrl is null!");
    return -1;
  }
  const LibraryText description = descriptionOf(opened);
  const int32_t number = DeviceCtrl_getDeviceNumber(opened);
  DeviceCtrl_dispose(opened);
  if (device.DeviceNumber == -1) device.DeviceNumber = number;
  if (CvxIsFusionDevice(device.DeviceNumber) != Success) {
    printf("%S is not a fusion device.\n", description.data());
    return -1;
  }
  const std::optional<FusionChildren> children = childrenOf(device.DeviceNumber);
  // Quirk: silent, here and when the library refuses to remove them.
  if (!children) return 0;
  if (CvxFusionDeviceRemoveChildren(device.DeviceNumber, children->count, children->numbers.data()) != Success)
    return 0;
  printf("Dissociate the speciated fusion device %S successfully.\n", description.data());
  return 0;
}
