#include "simulator/rig/rig_writer.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace simulator {

namespace {

// Writes keys in the order in which they are added.
using OrderedJson = nlohmann::ordered_json;

// A string: JSON has no hexadecimal numbers, and in decimal people would not recognise addresses and codes.
std::string hexadecimal(uint64_t value, int digits = 1) {
  char text[19];
  snprintf(text, sizeof text, "0x%0*llx", digits, static_cast<unsigned long long>(value));
  return text;
}

template <typename Element, typename Write>
OrderedJson listOf(const std::vector<Element>& elements, Write write) {
  OrderedJson list = OrderedJson::array();
  for (const Element& element : elements) list.push_back(write(element));
  return list;
}

// Leaves out what a reader of the rig takes for granted.
template <typename Value, typename Usual>
void addUnless(OrderedJson& object, const char* key, const Value& value, const Usual& usual) {
  if (value != usual) object[key] = value;
}

template <typename Value>
void addIfGiven(OrderedJson& object, const char* key, const std::optional<Value>& value) {
  if (value) object[key] = *value;
}

OrderedJson versionOf(const Chip& chip) {
  const auto* const number = std::get_if<uint16_t>(&chip.version);
  return number == nullptr ? std::get<std::string>(chip.version) : hexadecimal(*number, 4);
}

OrderedJson chipOf(const Chip& chip) {
  OrderedJson object = {{"description", chip.description}, {"version", versionOf(chip)}};
  addUnless(object, "notice", chip.notice, Chip::UsualNotice);
  addIfGiven(object, "password", chip.password);
  addUnless(object, "progress", chip.progress, Chip{}.progress);
  return object;
}

OrderedJson codeOf(uint32_t code) { return hexadecimal(code); }

OrderedJson itemOf(const AdjustingCode& item) {
  OrderedJson object = {{"name", item.name}};
  if (item.inUse != 0) object["in_use"] = codeOf(item.inUse);
  if (item.backup != 0) object["backup"] = codeOf(item.backup);
  // The default of a walk is the code in use.
  if (item.walk != std::vector{item.inUse}) object["walk"] = listOf(item.walk, codeOf);
  addUnless(object, "fails", item.fails, false);
  return object;
}

OrderedJson sectionOf(const Section& section) {
  return {{"description", section.description},
          {"instruction", section.instruction},
          {"items", listOf(section.items, itemOf)}};
}

OrderedJson solutionOf(const Solution& solution) {
  return {{"name", solution.name},
          {"description", solution.description},
          {"instruction", solution.instruction},
          {"sections", listOf(solution.sections, sectionOf)}};
}

OrderedJson addressOf(uint64_t address) { return hexadecimal(address); }

OrderedJson deviceOf(const Device& device) {
  OrderedJson object = {{"number", device.number}, {"description", device.description}};
  if (device.productId) object["product_id"] = hexadecimal(static_cast<uint64_t>(*device.productId));
  addUnless(object, "board_id", device.boardId, 0);
  addUnless(object, "highest_board_id", device.highestBoardId, Device::UsualHighestBoardId);
  addIfGiven(object, "board_version", device.boardVersion);
  addIfGiven(object, "driver_version", device.driverVersion);
  addIfGiven(object, "location", device.location);
  if (device.baseAddresses) object["base_addresses"] = listOf(*device.baseAddresses, addressOf);
  addIfGiven(object, "interrupts", device.interrupts);
  if (device.firmware) object["firmware"] = listOf(*device.firmware, chipOf);
  if (device.calibration) object["calibration"] = listOf(*device.calibration, solutionOf);
  addIfGiven(object, "children", device.children);
  return object;
}

}  // namespace

std::string textOf(const Rig& rig) { return OrderedJson{{"devices", listOf(rig.devices, deviceOf)}}.dump(2) + "\n"; }

}  // namespace simulator
