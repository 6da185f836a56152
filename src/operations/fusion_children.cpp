#include "operations/fusion_children.h"

#include <algorithm>

#include "operations/library_text.h"

using namespace Automation::Velq;

std::optional<FusionChildren> childrenOf(int32_t fusionNumber) {
  FusionChildren children{.count = MostFusionChildren};
  children.numbers.fill(-1);
  if (CvxFusionDeviceGetChildren(fusionNumber, &children.count, children.numbers.data()) != Success)
    return std::nullopt;
  // A library may count more than it had room to fill.
  children.count = std::min(children.count, MostFusionChildren);
  return children;
}

std::wstring describe(const FusionChildren& children) {
  std::wstring report;
  for (int32_t i = 0; i < children.count; ++i) {
    DeviceCtrl* const child = DeviceCtrl_Create(children.numbers[static_cast<size_t>(i)], nullptr, AccessDevice);
    if (child == nullptr) continue;
    report += descriptionOf(child).data();
    report += L' ';
  }
  // Quirk: removes the spaces at the end of the last description, too.
  report.erase(report.find_last_not_of(L' ') + 1);
  return report;
}
