#include "simulator/rig/rig.h"

#include <fcntl.h>
#include <velq/types.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <string_view>
#include <unordered_map>

#include "base/descriptor.h"
#include "simulator/rig/builtin_rig.h"
#include "simulator/rig/json_document.h"
#include "simulator/rig/json_fields.h"
#include "simulator/rig/rig_device.h"

namespace simulator {

namespace {

constexpr size_t LongestFile = 64 << 20;

// Refuses devices that cannot stand in one rig together. They are in the order of the file, for faults name their place
// in it.
class RigCheck {
 public:
  explicit RigCheck(const std::vector<Device>& devices) : devices_(devices) {
    for (size_t i = 0; i < devices.size(); ++i) {
      const auto [first, isNew] = places_.emplace(devices[i].number, i);
      if (!isNew) throw RigError(place(i) + "/number: expected another number than that of " + place(first->second));
    }
    for (size_t i = 0; i < devices.size(); ++i) {
      if (devices[i].children) checkChildren(*devices[i].children, place(i) + "/children");
    }
  }

 private:
  static std::string place(size_t index) { return "/devices/" + std::to_string(index); }

  void checkChildren(const std::vector<int32_t>& children, const std::string& place) {
    if (children.empty() || children.size() > Automation::Velq::MostFusionChildren)
      throw RigError(place + ": expected 1 to 256 children");
    for (size_t i = 0; i < children.size(); ++i) {
      const std::string childPlace = place + "/" + std::to_string(i) + ": expected ";
      const auto child = places_.find(children[i]);
      if (child == places_.end()) throw RigError(childPlace + "the number of a device that is listed");
      const Device& device = devices_[child->second];
      if (device.children) throw RigError(childPlace + "a device that is no fusion device");
      if (!taken_.insert(device.number).second) throw RigError(childPlace + "a device that belongs to no group yet");
      if (device.productId != devices_[places_.at(children.front())].productId)
        throw RigError(childPlace + "a device with the product id of the first child");
    }
  }

  const std::vector<Device>& devices_;
  std::unordered_map<int32_t, size_t> places_;  ///< positions in the file, by number
  std::set<int32_t> taken_;                     ///< children of any group
};

Rig readRig(std::string_view text) {
  Rig rig;
  const auto take = [&](const JsonValue& device) { rig.devices.push_back(readDevice(device)); };
  const nlohmann::json document = parseJson(text, "devices", take);
  JsonFields fields(JsonValue(document, ""));
  const JsonValue devices = fields.required("devices");
  if (!devices.json().is_array()) devices.fail("a list");
  if (const auto schema = fields.optional("$schema")) schema->text();  // for editors
  fields.end();
  RigCheck{rig.devices};
  const auto byNumber = [](const Device& a, const Device& b) { return a.number < b.number; };
  std::sort(rig.devices.begin(), rig.devices.end(), byNumber);
  return rig;
}

std::string readFile(const std::string& path) {
  const base::Descriptor file(path, O_RDONLY);
  if (!file.isOpen()) throw RigError(std::string("cannot be opened: ") + std::strerror(errno));
  std::string text;
  std::vector<char> chunk(1 << 16);
  for (int64_t count = 1; count != 0;) {
    count = file.read(chunk.data(), chunk.size());
    if (count < 0) throw RigError(std::string("cannot be read: ") + std::strerror(errno));
    text.append(chunk.data(), static_cast<size_t>(count));
    if (text.size() > LongestFile) throw RigError("the document: expected at most 64 MiB");
  }
  return text;
}

}  // namespace

const Device* Rig::find(int32_t number) const {
  // Most rigs number their devices from 0 on without a gap.
  const auto likely = static_cast<size_t>(number);
  if (likely < devices.size() && devices[likely].number == number) return &devices[likely];
  const auto found = std::lower_bound(devices.begin(), devices.end(), number,
                                      [](const Device& device, int32_t wanted) { return device.number < wanted; });
  return found != devices.end() && found->number == number ? &*found : nullptr;
}

bool Rig::hasBoard(int32_t number) const {
  const Device* const device = find(number);
  return device != nullptr && !device->children;
}

Rig readRigFile(const std::string& path) { return readRig(readFile(path)); }

Rig readBuiltInRig() { return readRig(BuiltInRig); }

}  // namespace simulator
