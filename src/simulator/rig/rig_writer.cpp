#include "simulator/rig/rig_writer.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace simulator {

namespace {

// Writes keys in the order in which they are added.
using OrderedJson = nlohmann::ordered_json;

// A string: JSON has no hexadecimal numbers, and in decimal people would not recognise addresses and versions.
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

OrderedJson chipOf(const Chip& chip) {
  const auto* const number = std::get_if<uint16_t>(&chip.version);
  OrderedJson object = {{"description", chip.description},
                        {"version", number == nullptr ? shown(chip.version) : hexadecimal(*number, 4)}};
  if (chip.notice != Chip::UsualNotice) object["notice"] = chip.notice;
  return object;
}

OrderedJson itemOf(const AdjustingCode& item) { return {{"name", item.name}}; }

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

// Leaves out what a reader of the rig takes for granted.
OrderedJson deviceOf(const Device& device) {
  OrderedJson object = {{"number", device.number}, {"description", device.description}};
  if (device.productId) object["product_id"] = hexadecimal(static_cast<uint64_t>(*device.productId));
  if (device.boardId != 0) object["board_id"] = device.boardId;
  if (device.highestBoardId != Device::UsualHighestBoardId) object["highest_board_id"] = device.highestBoardId;
  if (device.boardVersion) object["board_version"] = *device.boardVersion;
  if (device.driverVersion) object["driver_version"] = *device.driverVersion;
  if (device.location) object["location"] = *device.location;
  if (device.baseAddresses)
    object["base_addresses"] = listOf(*device.baseAddresses, [](uint64_t address) { return hexadecimal(address); });
  if (device.interrupts) object["interrupts"] = *device.interrupts;
  if (device.firmware) object["firmware"] = listOf(*device.firmware, chipOf);
  if (device.calibration) object["calibration"] = listOf(*device.calibration, solutionOf);
  if (device.children) object["children"] = *device.children;
  return object;
}

}  // namespace

std::string textOf(const Rig& rig) { return OrderedJson{{"devices", listOf(rig.devices, deviceOf)}}.dump(2) + "\n"; }

}  // namespace simulator
