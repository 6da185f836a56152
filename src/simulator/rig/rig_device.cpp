#include "simulator/rig/rig_device.h"

namespace simulator {

namespace {

std::optional<std::string> optionalText(JsonFields& fields, const char* key) {
  const auto value = fields.optional(key);
  return value ? std::optional(value->text()) : std::nullopt;
}

int32_t readInt32(const JsonValue& value) { return value.int32(); }
uint32_t readCode(const JsonValue& value) { return static_cast<uint32_t>(value.number(0, UINT32_MAX)); }

uint32_t readOptionalCode(JsonFields& fields, const char* key) {
  const auto value = fields.optional(key);
  return value ? readCode(*value) : 0;
}

FirmwareVersion readVersion(const JsonValue& value) {
  // Of a real chip a library reports any string, which a capture writes as it is.
  if (value.isPlainString()) return value.text();
  return static_cast<uint16_t>(value.number(0, 0xFFFF));
}

Chip readChip(const JsonValue& value) {
  JsonFields fields(value);
  Chip chip{.description = fields.required("description").text(),
            .version = readVersion(fields.required("version")),
            .notice = optionalText(fields, "notice").value_or(Chip::UsualNotice),
            .password = optionalText(fields, "password")};
  if (const auto progress = fields.optional("progress")) {
    chip.progress = progress->list(readInt32);
    // The last value repeats, so there has to be one.
    if (chip.progress.empty()) progress->fail("at least one progress value");
  }
  fields.end();
  return chip;
}

AdjustingCode readItem(const JsonValue& value) {
  JsonFields fields(value);
  AdjustingCode item{.name = fields.required("name").text(),
                     .inUse = readOptionalCode(fields, "in_use"),
                     .backup = readOptionalCode(fields, "backup")};
  if (const auto walk = fields.optional("walk")) {
    item.walk = walk->list(readCode);
    if (item.walk.empty()) walk->fail("at least one adjusting code");
  }
  if (const auto fails = fields.optional("fails")) item.fails = fails->boolean();
  fields.end();
  return item;
}

Section readSection(const JsonValue& value) {
  JsonFields fields(value);
  Section section{.description = fields.required("description").text(),
                  .instruction = fields.required("instruction").text(),
                  .items = fields.required("items").list(readItem)};
  fields.end();
  return section;
}

Solution readSolution(const JsonValue& value) {
  JsonFields fields(value);
  Solution solution{.name = fields.required("name").text(),
                    .description = fields.required("description").text(),
                    .instruction = fields.required("instruction").text(),
                    .sections = fields.required("sections").list(readSection)};
  fields.end();
  return solution;
}

int32_t readDeviceNumber(const JsonValue& value) { return value.int32(0); }
uint64_t readAddress(const JsonValue& value) { return value.unsigned64(); }

template <typename Element>
std::optional<std::vector<Element>> optionalList(JsonFields& fields, const char* key,
                                                 Element (*read)(const JsonValue&)) {
  const auto value = fields.optional(key);
  return value ? std::optional(value->list(read)) : std::nullopt;
}

}  // namespace

Device readDevice(const JsonValue& value) {
  JsonFields fields(value);
  Device device;
  device.number = readDeviceNumber(fields.required("number"));
  // More than tools can set: a real library may list a description that is longer than a record's.
  device.description = fields.required("description").text(255);
  device.children = optionalList(fields, "children", readDeviceNumber);
  if (const auto id = fields.optional("product_id")) device.productId = id->int32(0);
  if (const auto highest = fields.optional("highest_board_id")) device.highestBoardId = highest->int32(-1);
  // A board whose id cannot be set may have any.
  const int32_t highestId = device.highestBoardId == -1 ? INT32_MAX : device.highestBoardId;
  if (const auto id = fields.optional("board_id")) device.boardId = static_cast<int32_t>(id->number(0, highestId));
  device.boardVersion = optionalText(fields, "board_version");
  device.driverVersion = optionalText(fields, "driver_version");
  device.location = optionalText(fields, "location");
  device.baseAddresses = optionalList(fields, "base_addresses", readAddress);
  device.interrupts = optionalList(fields, "interrupts", readInt32);
  device.firmware = optionalList(fields, "firmware", readChip);
  device.calibration = optionalList(fields, "calibration", readSolution);
  fields.end();
  return device;
}

}  // namespace simulator
