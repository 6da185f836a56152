#include <algorithm>
#include <set>

#include "simulator/library/objects.h"
#include "simulator/library/operations.h"

namespace simulator {

using namespace Automation::Velq;

namespace {

// Above the numbers that boards usually have.
constexpr int32_t FirstNewNumber = 256;

using Children = std::vector<int32_t>;

Children childrenFrom(int32_t count, const int32_t* children) {
  return count > 0 && children != nullptr ? Children(children, children + count) : Children();
}

// Whether the devices can be children of one group together with those that it has already.
ErrorCode checkFusable(Simulation& simulation, const Children& children, const Children& present) {
  if (children.empty()) return ErrorCannotFuse;
  const std::set<int32_t> distinct(children.begin(), children.end());
  if (distinct.size() != children.size()) return ErrorCannotFuse;
  if (children.size() + present.size() > MostFusionChildren) return ErrorCannotFuse;
  // All children are of one model: that of the group, or of the first.
  const int32_t model = present.empty() ? children.front() : present.front();
  for (const int32_t child : children) {
    if (!simulation.exists(child) || simulation.isFusion(child) || simulation.groupOf(child)) return ErrorCannotFuse;
    if (simulation.productId(child) != simulation.productId(model)) return ErrorCannotFuse;
    if (const ErrorCode status = simulation.checkFree(child); status != Success) {
      if (status == ErrorDeviceBusy)
        report("device " + std::to_string(child) + " is in use by another process and cannot be fused");
      return ErrorCannotFuse;
    }
  }
  return Success;
}

ErrorCode checkAddable(Simulation& simulation, int32_t fusionNumber, const Children& children) {
  if (!simulation.isFusion(fusionNumber)) return ErrorNoSuchDevice;
  return checkFusable(simulation, children, simulation.children(fusionNumber));
}

// `group` -1 removes the children from theirs. It is saved as a value, because a change that is reverted would return a
// child to the group that it has in the rig.
void setGroup(std::vector<StateChange>& changes, const Children& children, int32_t group) {
  for (const int32_t child : children) changes.push_back({child, FusionItem, group});
}

// A description that no device has: a board of the rig can have the first choice already.
std::string freeDescription(Simulation& simulation, int32_t number) {
  std::string description = "Fusion device " + std::to_string(number);
  while (simulation.findDescription(description)) description += "'";
  return description;
}

}  // namespace

ErrorCode CvxIsFusionDevice(int32_t deviceNumber) {
  Simulation& simulation = Simulation::instance();
  simulation.refresh();
  return simulation.isFusion(deviceNumber) ? Success : ErrorNotGiven;
}

ErrorCode CvxFusionDeviceCreate(int32_t count, const int32_t* children, int32_t* newNumber) {
  Simulation& simulation = Simulation::instance();
  const Children list = childrenFrom(count, children);
  int32_t number = FirstNewNumber;
  const ErrorCode status = simulation.change([&](std::vector<StateChange>& changes) {
    if (const ErrorCode refusal = checkFusable(simulation, list, {}); refusal != Success) return refusal;
    while (simulation.exists(number)) ++number;
    setGroup(changes, list, number);
    changes.push_back({number, DescriptionItem, freeDescription(simulation, number)});
    return Success;
  });
  // After any other status tools go on with device 0.
  if (status != Success) return ErrorCannotFuse;
  *newNumber = number;
  return Success;
}

ErrorCode CvxFusionDeviceCheckChildren(int32_t fusionNumber, int32_t count, const int32_t* children) {
  Simulation& simulation = Simulation::instance();
  simulation.refresh();
  return checkAddable(simulation, fusionNumber, childrenFrom(count, children));
}

ErrorCode CvxFusionDeviceAddChildren(int32_t fusionNumber, int32_t count, const int32_t* children) {
  Simulation& simulation = Simulation::instance();
  const Children list = childrenFrom(count, children);
  return simulation.change([&](std::vector<StateChange>& changes) {
    const ErrorCode status = checkAddable(simulation, fusionNumber, list);
    if (status == Success) setGroup(changes, list, fusionNumber);
    return status;
  });
}

ErrorCode CvxFusionDeviceGetChildren(int32_t fusionNumber, int32_t* count, int32_t* children) {
  Simulation& simulation = Simulation::instance();
  simulation.refresh();
  if (!simulation.isFusion(fusionNumber)) return ErrorNoSuchDevice;
  const Children present = simulation.children(fusionNumber);
  if (std::cmp_greater(present.size(), *count)) return ErrorRefused;
  std::copy(present.begin(), present.end(), children);
  *count = static_cast<int32_t>(present.size());
  return Success;
}

ErrorCode CvxFusionDeviceRemoveChildren(int32_t fusionNumber, int32_t count, const int32_t* children) {
  Simulation& simulation = Simulation::instance();
  const Children list = childrenFrom(count, children);
  return simulation.change([&](std::vector<StateChange>& changes) {
    if (list.empty() || !simulation.isFusion(fusionNumber)) return ErrorRefused;
    for (const int32_t child : list) {
      if (simulation.groupOf(child) != fusionNumber) return ErrorRefused;
      if (const ErrorCode status = simulation.checkFree(child); status != Success) return status;
    }
    setGroup(changes, list, -1);
    // A number can be in the list twice.
    const std::set<int32_t> gone(list.begin(), list.end());
    // A state with values of a device that is gone would be taken for that of another rig.
    if (gone.size() == simulation.children(fusionNumber).size()) simulation.revertAll(fusionNumber, changes);
    return Success;
  });
}

}  // namespace simulator
