#include "simulator/rig/rig.h"

#include <fcntl.h>
#include <velq/types.h>

#include <cerrno>
#include <cstring>
#include <set>

#include "base/descriptor.h"
#include "simulator/rig/builtin_rig.h"
#include "simulator/rig/json_document.h"
#include "simulator/rig/rig_device.h"

namespace simulator {

namespace {

// A file without end, such as /dev/zero, must not fill the memory.
constexpr size_t LongestRig = 64 << 20;

std::string placeOf(size_t position) { return "/devices/" + std::to_string(position); }

void index(Rig& rig) {
  rig.positions.reserve(rig.devices.size());
  for (size_t i = 0; i < rig.devices.size(); ++i) {
    const auto [first, isNew] = rig.positions.emplace(rig.devices[i].number, i);
    if (!isNew) throw RigError(placeOf(i) + "/number: expected a number other than that of " + placeOf(first->second));
  }
}

// Rejects children that cannot form a fusion device. `taken` are the children of the fusion devices before.
void checkChildren(const Rig& rig, const std::vector<int32_t>& children, const std::string& place,
                   std::set<int32_t>& taken) {
  if (children.empty() || children.size() > Automation::Velq::MostFusionChildren)
    throw RigError(place + ": expected 1 to 256 children");
  for (size_t i = 0; i < children.size(); ++i) {
    const std::string childPlace = place + "/" + std::to_string(i) + ": expected ";
    const Device* const child = rig.find(children[i]);
    if (child == nullptr) throw RigError(childPlace + "the number of a device that is listed");
    if (child->children) throw RigError(childPlace + "a device that is not a fusion device");
    if (!taken.insert(child->number).second)
      throw RigError(childPlace + "a device that belongs to no other fusion device");
    if (child->productId.value_or(0) != rig.find(children.front())->productId.value_or(0))
      throw RigError(childPlace + "a device with the product id of the first child");
  }
}

void checkGroups(const Rig& rig) {
  std::set<int32_t> taken;
  for (size_t i = 0; i < rig.devices.size(); ++i) {
    if (rig.devices[i].children) checkChildren(rig, *rig.devices[i].children, placeOf(i) + "/children", taken);
  }
}

std::string readFile(const std::string& path) {
  const base::Descriptor file(path, O_RDONLY);
  if (!file.isOpen()) throw RigError(std::string("cannot be opened: ") + std::strerror(errno));
  std::string text;
  // Not by its length: a rig can come from a pipe. Ends soon after the limit, which readRig() reports.
  std::vector<char> chunk(1 << 16);
  for (int64_t count = 1; count != 0 && text.size() <= LongestRig;) {
    count = file.read(chunk.data(), chunk.size());
    if (count < 0) throw RigError(std::string("cannot be read: ") + std::strerror(errno));
    text.append(chunk.data(), static_cast<size_t>(count));
  }
  return text;
}

}  // namespace

const Device* Rig::find(int32_t number) const {
  // Most rigs number their devices from 0 on without a gap. A negative number becomes one beyond every list.
  const auto likely = static_cast<size_t>(number);
  if (likely < devices.size() && devices[likely].number == number) return &devices[likely];
  const auto found = positions.find(number);
  return found == positions.end() ? nullptr : &devices[found->second];
}

bool Rig::hasBoard(int32_t number) const {
  const Device* const device = find(number);
  return device != nullptr && !device->children;
}

Rig readRig(std::string_view text) {
  if (text.size() > LongestRig) throw RigError("the document: expected at most 64 MiB");
  Rig rig;
  const auto takeDevice = [&](const JsonValue& device) { rig.devices.push_back(readDevice(device)); };
  parseJson(text, "devices", takeDevice, [](const JsonValue& document) {
    JsonFields fields(document);
    // Its elements were taken; whether it is a list at all is not known yet.
    fields.required("devices").length();
    // Only editors use it.
    if (const auto schema = fields.optional("$schema")) schema->text();
    fields.end();
  });
  // What devices have to do with each other is known only with all of them.
  index(rig);
  checkGroups(rig);
  return rig;
}

Rig readRigFile(const std::string& path) { return readRig(readFile(path)); }

Rig readBuiltInRig() { return readRig(BuiltInRig); }

}  // namespace simulator
