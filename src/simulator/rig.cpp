#include "simulator/rig.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>
#include <unordered_map>

#include "simulator/builtin_rig.h"
#include "simulator/json_fields.h"

namespace simulator {

namespace {

using nlohmann::json;

constexpr int DeepestNesting = 10;

std::string textOr(JsonFields& fields, const char* key, const char* otherwise) {
  const auto value = fields.optional(key);
  return value ? value->text() : otherwise;
}

std::optional<std::string> optionalText(JsonFields& fields, const char* key) {
  const auto value = fields.optional(key);
  return value ? std::optional(value->text()) : std::nullopt;
}

uint32_t readCode(const JsonValue& value) { return static_cast<uint32_t>(value.number(0, UINT32_MAX)); }

Chip readChip(const JsonValue& value) {
  JsonFields fields(value);
  Chip chip{.description = fields.required("description").text(),
            .version = static_cast<uint16_t>(fields.required("version").number(0, 0xFFFF)),
            .notice = textOr(fields, "notice", "Restart the device after the overwrite."),
            .password = optionalText(fields, "password"),
            .progress = {0, 25, 50, 75, 100}};
  if (const auto progress = fields.optional("progress")) {
    chip.progress = progress->list<int32_t>([](const JsonValue& element) { return element.int32(); });
    if (chip.progress.empty()) progress->fail("at least one progress value");
  }
  fields.end();
  return chip;
}

AdjustingCode readItem(const JsonValue& value) {
  JsonFields fields(value);
  AdjustingCode item{.name = fields.required("name").text(),
                     .inUse = readCode(fields.required("in_use")),
                     .backup = readCode(fields.required("backup")),
                     .walk = {},
                     .fails = false};
  const JsonValue walk = fields.required("walk");
  item.walk = walk.list<uint32_t>(readCode);
  if (item.walk.empty()) walk.fail("at least one adjusting code");
  if (const auto fails = fields.optional("fails")) item.fails = fails->boolean();
  fields.end();
  return item;
}

Section readSection(const JsonValue& value) {
  JsonFields fields(value);
  Section section{.description = fields.required("description").text(),
                  .instruction = fields.required("instruction").text(),
                  .items = fields.required("items").list<AdjustingCode>(readItem)};
  fields.end();
  return section;
}

Solution readSolution(const JsonValue& value) {
  JsonFields fields(value);
  Solution solution{.name = fields.required("name").text(),
                    .description = fields.required("description").text(),
                    .instruction = fields.required("instruction").text(),
                    .sections = fields.required("sections").list<Section>(readSection)};
  fields.end();
  return solution;
}

int32_t readInt32(const JsonValue& value) { return value.int32(); }
int32_t readDeviceNumber(const JsonValue& value) { return value.int32(0); }
uint64_t readAddress(const JsonValue& value) { return value.unsigned64(); }

template <typename Element>
std::unique_ptr<std::vector<Element>> optionalList(JsonFields& fields, const char* key,
                                                   Element (*read)(const JsonValue&)) {
  const auto value = fields.optional(key);
  return value ? std::make_unique<std::vector<Element>>(value->list<Element>(read)) : nullptr;
}

Device readDevice(const JsonValue& value) {
  JsonFields fields(value);
  Device device;
  device.number = readDeviceNumber(fields.required("number"));
  device.description = fields.required("description").text(255);
  device.children = optionalList(fields, "children", readDeviceNumber);
  if (const auto id = fields.optional("product_id")) device.productId = id->int32(0);
  if (const auto id = fields.optional("board_id")) device.boardId = id->int32(0);
  if (const auto highest = fields.optional("highest_board_id")) device.highestBoardId = highest->int32(-1);
  device.boardVersion = optionalText(fields, "board_version");
  device.driverVersion = optionalText(fields, "driver_version");
  device.location = optionalText(fields, "location");
  if (const auto list = fields.optional("base_addresses")) device.baseAddresses = list->list<uint64_t>(readAddress);
  if (const auto list = fields.optional("interrupts")) device.interrupts = list->list<int32_t>(readInt32);
  device.firmware = optionalList(fields, "firmware", readChip);
  device.calibration = optionalList(fields, "calibration", readSolution);
  fields.end();
  return device;
}

std::string devicePlace(size_t index) { return "/devices/" + std::to_string(index); }

// Takes the devices out of the document one by one while it is parsed, so that a large rig never stands in memory as
// JSON.
class RigParser {
 public:
  template <typename Input>
  Rig parse(Input&& input) {
    json document;
    try {
      document = json::parse(std::forward<Input>(input), [this](int depth, json::parse_event_t event, json& parsed) {
        return step(depth, event, parsed);
      });
    } catch (const json::parse_error& error) {
      const std::string_view what = error.what();
      const size_t place = what.find("line ");
      throw RigError(std::string(what.substr(place == std::string_view::npos ? 0 : place)));
    }
    JsonFields fields(JsonValue(document, ""));
    if (!fields.required("devices").json().is_array()) JsonValue(document["devices"], "/devices").fail("a list");
    fields.end();
    order();
    checkGroups();
    return std::move(rig_);
  }

 private:
  bool step(int depth, json::parse_event_t event, const json& parsed) {
    if (depth > DeepestNesting) throw RigError(here() + ": nested too deeply");
    if (event == json::parse_event_t::object_start) keys_[depth].clear();
    if (event == json::parse_event_t::key) {
      const auto& key = parsed.get_ref<const std::string&>();
      if (depth == 1) inDevices_ = key == "devices";
      if (!keys_[depth - 1].insert(key).second) throw RigError(here() + ": the key \"" + key + "\" stands twice");
    }
    if (!inDevices_) return true;
    if (depth == 1 && event == json::parse_event_t::object_start) throw RigError("/devices: expected a list");
    if (depth != 2) return true;
    if (event == json::parse_event_t::value || event == json::parse_event_t::array_start)
      throw RigError(here() + ": expected an object");
    if (event != json::parse_event_t::object_end) return true;
    rig_.devices.push_back(readDevice(JsonValue(parsed, here())));
    return false;
  }

  std::string here() const { return inDevices_ ? devicePlace(rig_.devices.size()) : ""; }

  void order() {
    std::unordered_map<int32_t, size_t> places;
    for (size_t i = 0; i < rig_.devices.size(); ++i) {
      const auto [first, isNew] = places.emplace(rig_.devices[i].number, i);
      if (!isNew)
        throw RigError(devicePlace(i) + "/number: " + std::to_string(first->first) + " is the number of " +
                       devicePlace(first->second) + " already");
    }
    const auto byNumber = [](const Device& a, const Device& b) { return a.number < b.number; };
    std::sort(rig_.devices.begin(), rig_.devices.end(), byNumber);
  }

  void checkGroups() {
    std::set<int32_t> taken;
    for (Device& group : rig_.devices) {
      if (!group.children) continue;
      const std::string place = "/devices: the fusion device " + std::to_string(group.number);
      if (group.children->empty()) throw RigError(place + " has no children");
      for (const int32_t number : *group.children) {
        const std::string childPlace = place + " has the child " + std::to_string(number) + ", ";
        const Device* const child = rig_.find(number);
        if (child == nullptr) throw RigError(childPlace + "which is not listed");
        if (child->children) throw RigError(childPlace + "which is a fusion device");
        if (!taken.insert(number).second) throw RigError(childPlace + "which belongs to a group already");
        const Device* const first = rig_.find(group.children->front());
        if (child->productId != first->productId) throw RigError(childPlace + "which has another product id");
      }
      group.productId = rig_.find(group.children->front())->productId;
    }
  }

  Rig rig_;
  bool inDevices_ = false;
  std::set<std::string> keys_[DeepestNesting + 1];
};

}  // namespace

const Device* Rig::find(int32_t number) const {
  const auto found = std::lower_bound(devices.begin(), devices.end(), number,
                                      [](const Device& device, int32_t wanted) { return device.number < wanted; });
  return found != devices.end() && found->number == number ? &*found : nullptr;
}

Rig readRigFile(const std::string& path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "re"), std::fclose);
  if (!file) throw RigError(std::string("cannot be opened: ") + std::strerror(errno));
  try {
    return RigParser().parse(file.get());
  } catch (const RigError&) {
    if (std::ferror(file.get()) != 0) throw RigError("cannot be read");
    throw;
  }
}

Rig readBuiltInRig() { return RigParser().parse(std::string_view(BuiltInRig)); }

}  // namespace simulator
