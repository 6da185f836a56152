#include <algorithm>

#include "simulator/library/objects.h"
#include "simulator/library/operations.h"
#include "simulator/library/strings.h"
#include "simulator/model/state_check.h"

namespace simulator {

namespace {

// Makes the array of objects of one kind for a rig list, once.
template <typename Kind, typename Owner, typename Given>
Array* objectArray(Owner& owner, HandleArrayObject*& made, const std::vector<Given>& list) {
  if (made == nullptr) {
    std::vector<Object*> objects;
    for (size_t i = 0; i < list.size(); ++i) objects.push_back(make<Kind>(&owner, list[i], i));
    made = make<HandleArrayObject>(&owner, std::move(objects));
  }
  return handleOf<Array>(made);
}

int32_t deviceNumber(const SolutionObject& solution) { return solution.device.number; }

std::string stateItem(const ItemObject& item) {
  return calibrationItem(item.section.solution.index, item.section.index, item.index);
}

// The outcome of a finished walk, to be put to use later; a later run of the same item replaces an earlier one.
void propose(SolutionObject& solution, const std::string& item, uint32_t code) {
  std::erase_if(solution.newCodes, [&](const StateChange& change) { return change.item == item; });
  solution.newCodes.push_back({deviceNumber(solution), item, int64_t{code}});
}

void proposeBackup(SolutionObject& solution) {
  solution.newCodes.clear();
  for (size_t k = 0; k < solution.solution.sections.size(); ++k) {
    const auto& items = solution.solution.sections[k].items;
    for (size_t j = 0; j < items.size(); ++j) propose(solution, calibrationItem(solution.index, k, j), items[j].backup);
  }
}

// Puts the new codes to use, or only makes sure that it could be done. A backup is in use with its second step, for
// tools report it as restored before they make it current.
ErrorCode keepCodes(const SolutionObject& solution, bool really) {
  Simulation& simulation = Simulation::instance();
  return simulation.change([&](std::vector<StateChange>& changes) {
    const ErrorCode status = simulation.checkFree(deviceNumber(solution));
    if (status == Success && really) changes = solution.newCodes;
    return status;
  });
}

}  // namespace

Array* CalibrationCtrl_getSolutions(CalibrationCtrl* control) {
  ControlObject& object = resolve<ControlObject>(control, __func__);
  if (object.scenario != ScenarioCalibration) failHandle(__func__, "handle of the wrong kind");
  if (object.device == nullptr) return nullptr;
  const Device* const device = Simulation::instance().rigDevice(object.device->number);
  if (device == nullptr || !device->calibration) return nullptr;
  return objectArray<SolutionObject>(object, object.items, *device->calibration);
}

const wchar_t* CalibrationSolution_getName(CalibrationSolution* solution) {
  return internedWide(resolve<SolutionObject>(solution, __func__).solution.name);
}

const wchar_t* CalibrationSolution_getDescription(CalibrationSolution* solution) {
  return internedWide(resolve<SolutionObject>(solution, __func__).solution.description);
}

const wchar_t* CalibrationSolution_getInstruction(CalibrationSolution* solution) {
  return internedWide(resolve<SolutionObject>(solution, __func__).solution.instruction);
}

Array* CalibrationSolution_getSections(CalibrationSolution* solution) {
  SolutionObject& object = resolve<SolutionObject>(solution, __func__);
  return objectArray<SectionObject>(object, object.sections, object.solution.sections);
}

ErrorCode CalibrationSolution_updateAsCurrent(CalibrationSolution* solution) {
  SolutionObject& object = resolve<SolutionObject>(solution, __func__);
  return object.newCodes.empty() ? ErrorWrongOrder : keepCodes(object, true);
}

ErrorCode CalibrationSolution_loadGoldenBackup(CalibrationSolution* solution, int32_t step) {
  SolutionObject& object = resolve<SolutionObject>(solution, __func__);
  if (step != 0 && (step != 1 || !object.backupPrepared)) return ErrorWrongOrder;
  object.backupPrepared = step == 0;
  if (step == 1) proposeBackup(object);
  return keepCodes(object, step == 1);
}

const wchar_t* CalibrationSection_getDescription(CalibrationSection* section) {
  return internedWide(resolve<SectionObject>(section, __func__).section.description);
}

const wchar_t* CalibrationSection_getInstruction(CalibrationSection* section) {
  return internedWide(resolve<SectionObject>(section, __func__).section.instruction);
}

ErrorCode CalibrationSection_start(CalibrationSection* section) {
  SectionObject& object = resolve<SectionObject>(section, __func__);
  ControlObject& control = object.solution.control;
  const int32_t number = object.solution.device.number;
  if (!control.holds.contains(number)) {
    if (const ErrorCode status = Simulation::instance().hold(number); status != Success) return status;
    control.holds.insert(number);
  }
  object.started = true;
  if (object.items != nullptr) {
    for (Object* const item : object.items->items) static_cast<ItemObject*>(item)->polls = 0;
  }
  return Success;
}

Array* CalibrationSection_getItems(CalibrationSection* section) {
  SectionObject& object = resolve<SectionObject>(section, __func__);
  return objectArray<ItemObject>(object, object.items, object.section.items);
}

const wchar_t* CalibrationItem_getName(CalibrationItem* item) {
  return internedWide(resolve<ItemObject>(item, __func__).code.name);
}

CalibrationState CalibrationItem_getState(CalibrationItem* item, int64_t* value, int32_t* detail, uint32_t* codes) {
  ItemObject& object = resolve<ItemObject>(item, __func__);
  const AdjustingCode& code = object.code;
  const size_t position = std::min(object.polls, code.walk.size() - 1);
  codes[1] = Simulation::instance().codeInUse(deviceNumber(object.section.solution), stateItem(object), code.inUse);
  codes[2] = code.backup;
  if (!object.section.started) return CalibrationFailed;
  ++object.polls;
  *value = static_cast<int64_t>(object.polls);
  *detail = static_cast<int32_t>(code.walk.size());
  codes[0] = code.walk[position];
  if (position + 1 < code.walk.size()) return CalibrationRunning;
  if (code.fails) return CalibrationFailed;
  propose(object.section.solution, stateItem(object), code.walk.back());
  return CalibrationDone;
}

}  // namespace simulator
