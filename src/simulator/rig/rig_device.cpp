#include "simulator/rig/rig_device.h"

namespace simulator {

namespace {

// An object as `Read` reads its members; rejects those that `Read` does not ask for.
template <auto Read>
auto readObject(const JsonValue& value) {
  JsonFields fields(value);
  auto object = Read(fields);
  fields.end();
  return object;
}

template <auto Read>
auto readList(const JsonValue& value) {
  return value.list(Read);
}

// The member `key` as `read` reads it; nothing when there is none.
template <typename Read>
auto optional(JsonFields& fields, const char* key, Read read) {
  const auto value = fields.optional(key);
  return value ? std::optional(read(*value)) : std::nullopt;
}

std::string readText(const JsonValue& value) { return value.text(); }
int32_t readInt32(const JsonValue& value) { return value.int32(); }
int32_t readNatural(const JsonValue& value) { return value.int32(0); }
uint32_t readCode(const JsonValue& value) { return static_cast<uint32_t>(value.number(0, UINT32_MAX)); }
uint64_t readAddress(const JsonValue& value) { return value.unsigned64(); }

FirmwareVersion readVersion(const JsonValue& value) {
  // Of a real chip a library reports any string, which a capture writes as it is.
  if (value.isPlainString()) return value.text();
  return static_cast<uint16_t>(value.number(0, 0xFFFF));
}

Chip readChip(JsonFields& fields) {
  Chip chip{.description = fields.required("description").text(),
            .version = readVersion(fields.required("version")),
            .notice = optional(fields, "notice", readText).value_or(Chip::UsualNotice),
            .password = optional(fields, "password", readText)};
  if (const auto progress = fields.optional("progress")) {
    chip.progress = progress->list(readInt32);
    // The last value repeats, so there has to be one.
    if (chip.progress.empty()) progress->fail("at least one progress value");
  }
  return chip;
}

AdjustingCode readItem(JsonFields& fields) {
  AdjustingCode item{.name = fields.required("name").text(),
                     .inUse = optional(fields, "in_use", readCode).value_or(0),
                     .backup = optional(fields, "backup", readCode).value_or(0)};
  if (const auto walk = fields.optional("walk")) {
    item.walk = walk->list(readCode);
    if (item.walk.empty()) walk->fail("at least one adjusting code");
  }
  if (const auto fails = fields.optional("fails")) item.fails = fails->boolean();
  return item;
}

Section readSection(JsonFields& fields) {
  return {.description = fields.required("description").text(),
          .instruction = fields.required("instruction").text(),
          .items = fields.required("items").list(readObject<readItem>)};
}

Solution readSolution(JsonFields& fields) {
  return {.name = fields.required("name").text(),
          .description = fields.required("description").text(),
          .instruction = fields.required("instruction").text(),
          .sections = fields.required("sections").list(readObject<readSection>)};
}

Device readMembers(JsonFields& fields) {
  Device device;
  device.number = fields.required("number").int32(0);
  // More than tools can set: a real library may list a description that is longer than a record's.
  device.description = fields.required("description").text(255);
  device.children = optional(fields, "children", readList<readNatural>);
  device.productId = optional(fields, "product_id", readNatural);
  if (const auto highest = fields.optional("highest_board_id")) device.highestBoardId = highest->int32(-1);
  // A board whose id cannot be set may have any.
  const int32_t highestId = device.highestBoardId == -1 ? INT32_MAX : device.highestBoardId;
  if (const auto id = fields.optional("board_id")) device.boardId = static_cast<int32_t>(id->number(0, highestId));
  device.boardVersion = optional(fields, "board_version", readText);
  device.driverVersion = optional(fields, "driver_version", readText);
  device.location = optional(fields, "location", readText);
  device.baseAddresses = optional(fields, "base_addresses", readList<readAddress>);
  device.interrupts = optional(fields, "interrupts", readList<readInt32>);
  device.firmware = optional(fields, "firmware", readList<readObject<readChip>>);
  device.calibration = optional(fields, "calibration", readList<readObject<readSolution>>);
  return device;
}

}  // namespace

Device readDevice(const JsonValue& value) { return readObject<readMembers>(value); }

}  // namespace simulator
