#include "compliance/devices/items.h"

namespace compliance {

namespace {

template <typename Object>
void visitString(Object* object, const char* what, const wchar_t* (*getter)(Object*), const std::string& place,
                 const ItemVisitor& visitor) {
  visitor.string([object, getter] { return getter(object); }, what, place);
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
  visitString(chip, "description", FirmwareItem_getDescription, place, visitor);
  visitString(chip, "version", FirmwareItem_getVersion, place, visitor);
  visitString(chip, "notice", FirmwareItem_getNotice, place, visitor);
  visitor.chip(chip, place);
}

void visitItem(CalibrationItem* item, const std::string& place, const ItemVisitor& visitor) {
  visitString(item, "name", CalibrationItem_getName, place, visitor);
  visitor.item(item, place);
}

void visitSection(CalibrationSection* section, const std::string& place, const ItemVisitor& visitor) {
  visitString(section, "description", CalibrationSection_getDescription, place, visitor);
  visitString(section, "instruction", CalibrationSection_getInstruction, place, visitor);
  visitElements<CalibrationItem>(CalibrationSection_getItems(section), "item", place, visitor, visitItem);
}

void visitSolution(CalibrationSolution* solution, const std::string& place, const ItemVisitor& visitor) {
  visitString(solution, "name", CalibrationSolution_getName, place, visitor);
  visitString(solution, "description", CalibrationSolution_getDescription, place, visitor);
  visitString(solution, "instruction", CalibrationSolution_getInstruction, place, visitor);
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
