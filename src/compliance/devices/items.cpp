#include "compliance/devices/items.h"

#include <utility>
#include <vector>

#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

template <typename Object>
using Strings = std::vector<std::pair<const char*, const wchar_t* (*)(Object*)>>;

template <typename Object>
void visitStrings(Object* object, const Strings<Object>& strings, const std::string& place,
                  const ItemVisitor& visitor) {
  for (const auto& [what, getter] : strings)
    visitor.string([object, get = getter] { return get(object); }, what, place);
}

template <typename Object, typename Visit>
void visitElements(Array* array, const std::string& kind, const std::string& place, const ItemVisitor& visitor,
                   const Visit& visit) {
  if (!visitor.array(array, kind, place)) return;
  const std::vector<void*> elements = elementsOf(array);
  const std::string prefix = place.empty() ? kind : place + ", " + kind;
  for (size_t i = 0; i < elements.size(); ++i)
    visit(static_cast<Object*>(elements[i]), prefix + " " + std::to_string(i), visitor);
}

void visitChip(FirmwareItem* chip, const std::string& place, const ItemVisitor& visitor) {
  visitStrings<FirmwareItem>(chip,
                             {{"description", FirmwareItem_getDescription},
                              {"version", FirmwareItem_getVersion},
                              {"notice", FirmwareItem_getNotice}},
                             place, visitor);
  visitor.chip(chip, place);
}

void visitItem(CalibrationItem* item, const std::string& place, const ItemVisitor& visitor) {
  visitStrings<CalibrationItem>(item, {{"name", CalibrationItem_getName}}, place, visitor);
  visitor.item(item, place);
}

void visitSection(CalibrationSection* section, const std::string& place, const ItemVisitor& visitor) {
  visitStrings<CalibrationSection>(
      section, {{"description", CalibrationSection_getDescription}, {"instruction", CalibrationSection_getInstruction}},
      place, visitor);
  visitElements<CalibrationItem>(CalibrationSection_getItems(section), "item", place, visitor, visitItem);
}

void visitSolution(CalibrationSolution* solution, const std::string& place, const ItemVisitor& visitor) {
  visitStrings<CalibrationSolution>(solution,
                                    {{"name", CalibrationSolution_getName},
                                     {"description", CalibrationSolution_getDescription},
                                     {"instruction", CalibrationSolution_getInstruction}},
                                    place, visitor);
  visitElements<CalibrationSection>(CalibrationSolution_getSections(solution), "section", place, visitor, visitSection);
}

}  // namespace

void visitItems(Scenario scenario, DaqCtrlBase* control, const ItemVisitor& visitor) {
  Array* const items = itemsOf(scenario, control);
  if (scenario == ScenarioFirmware)
    visitElements<FirmwareItem>(items, "chip", "", visitor, visitChip);
  else
    visitElements<CalibrationSolution>(items, "solution", "", visitor, visitSolution);
}

}  // namespace compliance
