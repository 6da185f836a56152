#include "simulator/rig/item.h"

#include <charconv>

namespace simulator {

std::string nameOf(const Item& item) {
  const auto& [first, second, third] = item.position;
  switch (item.kind) {
    case Item::Kind::BoardId:
      return "board id";
    case Item::Kind::Calibration:
      return "calibration " + std::to_string(first) + "." + std::to_string(second) + "." + std::to_string(third);
    case Item::Kind::Description:
      return "description";
    case Item::Kind::Firmware:
      return "firmware " + std::to_string(first);
    case Item::Kind::Fusion:
      return "fusion";
  }
  return "";
}

std::optional<Item> parseItem(std::string_view name) {
  for (const Item& item : {BoardIdItem, DescriptionItem, FusionItem}) {
    if (name == nameOf(item)) return item;
  }
  // Reads as many numbers as there are. Any malformed name differs from that of the item that is read from it.
  Item item{name.starts_with("firmware ") ? Item::Kind::Firmware : Item::Kind::Calibration};
  const char* const end = name.data() + name.size();
  // Without a space, npos + 1 is the beginning.
  const char* next = name.data() + name.find(' ') + 1;
  for (size_t& position : item.position) {
    next = std::from_chars(next, end, position).ptr;
    if (next != end) ++next;
  }
  return name == nameOf(item) ? std::optional(item) : std::nullopt;
}

bool hasItem(const Device& device, const Item& item) {
  const auto& [first, second, third] = item.position;
  if (item.kind == Item::Kind::Firmware) return device.firmware && first < device.firmware->size();
  if (item.kind != Item::Kind::Calibration) return true;
  if (!device.calibration || first >= device.calibration->size()) return false;
  const std::vector<Section>& sections = (*device.calibration)[first].sections;
  return second < sections.size() && third < sections[second].items.size();
}

}  // namespace simulator
