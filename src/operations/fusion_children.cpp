#include "operations/fusion_children.h"

#include <algorithm>

#include "operations/library_text.h"

using namespace Automation::Velq;

ErrorCode FusionChildren::read(int32_t fusionNumber) {
  numbers.fill(-1);
  count = Capacity;
  const ErrorCode status = CvxFusionDeviceGetChildren(fusionNumber, &count, numbers.data());
  count = std::min(count, Capacity);
  return status;
}

std::wstring FusionChildren::report() const {
  std::wstring report;
  for (int32_t i = 0; i < count; ++i) {
    DeviceCtrl* const child = DeviceCtrl_Create(numbers[static_cast<size_t>(i)], nullptr, AccessDevice);
    if (child == nullptr) continue;
    report += descriptionOf(child).data();
    report += L' ';
  }
  report.erase(report.find_last_not_of(L' ') + 1);
  return report;
}
