#include <algorithm>

#include "simulator/library/objects.h"
#include "simulator/library/operations.h"
#include "simulator/library/strings.h"

namespace simulator {

using namespace Automation::Velq;

namespace {

Item stateItem(const ItemObject& item) {
  const SectionObject& section = item.owner;
  return calibrationItem(section.owner.index, section.index, item.index);
}

// All of the backup replaces what was calibrated, so that no mixture of both becomes current.
void proposeBackup(SolutionObject& solution) {
  solution.newCodes.clear();
  for (size_t k = 0; k < solution.inRig.sections.size(); ++k) {
    const auto& items = solution.inRig.sections[k].items;
    for (size_t j = 0; j < items.size(); ++j)
      solution.newCodes[calibrationItem(solution.index, k, j)] = items[j].backup;
  }
}

// Saves codes as those in use; with none, finds out whether they could be saved.
ErrorCode saveCodes(const SolutionObject& solution, const std::map<Item, uint32_t>& codes) {
  Simulation& simulation = Simulation::instance();
  return simulation.change([&](std::vector<StateChange>& changes) {
    for (const auto& [item, code] : codes) changes.push_back({solution.device.number, item, int64_t{code}});
    return simulation.checkFree(solution.device.number);
  });
}

}  // namespace

Array* CalibrationCtrl_getSolutions(CalibrationCtrl* control) {
  return controlItems<SolutionObject>(control, __func__, ScenarioCalibration, &Device::calibration);
}

const wchar_t* CalibrationSolution_getName(CalibrationSolution* solution) {
  return internedWide(resolve<SolutionObject>(solution, __func__).inRig.name);
}

const wchar_t* CalibrationSolution_getDescription(CalibrationSolution* solution) {
  return internedWide(resolve<SolutionObject>(solution, __func__).inRig.description);
}

const wchar_t* CalibrationSolution_getInstruction(CalibrationSolution* solution) {
  return internedWide(resolve<SolutionObject>(solution, __func__).inRig.instruction);
}

Array* CalibrationSolution_getSections(CalibrationSolution* solution) {
  SolutionObject& object = resolve<SolutionObject>(solution, __func__);
  return handleArray<SectionObject>(object, object.sections, object.inRig.sections);
}

ErrorCode CalibrationSolution_updateAsCurrent(CalibrationSolution* solution) {
  SolutionObject& object = resolve<SolutionObject>(solution, __func__);
  return object.newCodes.empty() ? ErrorWrongOrder : saveCodes(object, object.newCodes);
}

ErrorCode CalibrationSolution_loadGoldenBackup(CalibrationSolution* solution, int32_t step) {
  SolutionObject& object = resolve<SolutionObject>(solution, __func__);
  if (step != 0 && (step != 1 || !object.backupPrepared)) return ErrorWrongOrder;
  object.backupPrepared = step == 0;
  // Step 0 finds out whether step 1 could save: only after a failure of step 0 do tools leave step 1 out.
  if (step == 0) return saveCodes(object, {});
  proposeBackup(object);
  // Already in use here: tools report the backup as restored before they make it current.
  return saveCodes(object, object.newCodes);
}

const wchar_t* CalibrationSection_getDescription(CalibrationSection* section) {
  return internedWide(resolve<SectionObject>(section, __func__).inRig.description);
}

const wchar_t* CalibrationSection_getInstruction(CalibrationSection* section) {
  return internedWide(resolve<SectionObject>(section, __func__).inRig.instruction);
}

ErrorCode CalibrationSection_start(CalibrationSection* section) {
  SectionObject& object = resolve<SectionObject>(section, __func__);
  const SolutionObject& solution = object.owner;
  if (const ErrorCode status = solution.owner.hold(solution.device.number); status != Success) return status;
  // Held until the control is disposed of: the new codes can become current as late as that.
  object.started = true;
  // A section that is started again has its items calibrated again.
  if (object.items != nullptr) {
    for (const void* const item : object.items->elements) resolve<ItemObject>(item, __func__).polls = 0;
  }
  return Success;
}

Array* CalibrationSection_getItems(CalibrationSection* section) {
  SectionObject& object = resolve<SectionObject>(section, __func__);
  return handleArray<ItemObject>(object, object.items, object.inRig.items);
}

const wchar_t* CalibrationItem_getName(CalibrationItem* item) {
  return internedWide(resolve<ItemObject>(item, __func__).inRig.name);
}

CalibrationState CalibrationItem_getState(CalibrationItem* item, int64_t* value, int32_t* detail, uint32_t* codes) {
  ItemObject& object = resolve<ItemObject>(item, __func__);
  SectionObject& section = object.owner;
  const AdjustingCode& code = object.inRig;
  const size_t position = std::min(object.polls, code.walk.size() - 1);
  // Tools show the first code only. All else is for those who read a trace.
  codes[1] = Simulation::instance().codeInUse(section.owner.device.number, stateItem(object), code.inUse);
  codes[2] = code.backup;
  // Tools poll after a start that was refused, too, and would poll for ever.
  if (!section.started) return CalibrationFailed;
  ++object.polls;
  *value = static_cast<int64_t>(object.polls);
  *detail = static_cast<int32_t>(code.walk.size());
  codes[0] = code.walk[position];
  if (position + 1 < code.walk.size()) return CalibrationRunning;
  if (code.fails) return CalibrationFailed;
  // Not in use until the tool makes it current. A later walk of the same item replaces it.
  section.owner.newCodes[stateItem(object)] = code.walk.back();
  return CalibrationDone;
}

}  // namespace simulator
