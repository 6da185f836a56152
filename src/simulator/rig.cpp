#include "simulator/rig.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>
#include <unordered_map>

#include "simulator/builtin_rig.h"
#include "simulator/rig_device.h"
#include "simulator/rig_document.h"

namespace simulator {

namespace {

constexpr size_t MostChildren = 256;

class RigParser {
 public:
  template <typename Input>
  Rig parse(Input&& input) {
    RigDocument([this](const JsonValue& device) {
      rig_.devices.push_back(readDevice(device, rig_.storage));
    }).parse(std::forward<Input>(input));
    rememberPlaces();
    for (const Device& device : rig_.devices) checkGroup(device);
    order();
    return std::move(rig_);
  }

 private:
  static std::string devicePlace(size_t index) { return "/devices/" + std::to_string(index); }

  void rememberPlaces() {
    for (size_t i = 0; i < rig_.devices.size(); ++i) {
      const auto [first, isNew] = places_.emplace(rig_.devices[i].number, i);
      if (!isNew)
        throw RigError(devicePlace(i) + "/number: expected another number than that of " + devicePlace(first->second));
    }
  }

  void checkGroup(const Device& group) {
    if (!group.children) return;
    const std::string place = devicePlace(places_.at(group.number)) + "/children";
    const std::vector<int32_t>& children = *group.children;
    if (children.empty() || children.size() > MostChildren) throw RigError(place + ": expected 1 to 256 children");
    for (size_t i = 0; i < children.size(); ++i) {
      const std::string childPlace = place + "/" + std::to_string(i) + ": expected ";
      const auto child = places_.find(children[i]);
      if (child == places_.end()) throw RigError(childPlace + "the number of a device that is listed");
      const Device& device = rig_.devices[child->second];
      if (device.children) throw RigError(childPlace + "a device that is no fusion device");
      if (!taken_.insert(device.number).second) throw RigError(childPlace + "a device that belongs to no group yet");
      if (device.productId != rig_.devices[places_.at(children.front())].productId)
        throw RigError(childPlace + "a device with the product id of the first child");
    }
  }

  void order() {
    const auto byNumber = [](const Device& a, const Device& b) { return a.number < b.number; };
    std::sort(rig_.devices.begin(), rig_.devices.end(), byNumber);
  }

  Rig rig_;
  std::unordered_map<int32_t, size_t> places_;  ///< positions in the file, by number
  std::set<int32_t> taken_;                     ///< children of any group
};

}  // namespace

const Device* Rig::find(int32_t number) const {
  // Most rigs number their devices from 0 on without a gap.
  const auto likely = static_cast<size_t>(number);
  if (likely < devices.size() && devices[likely].number == number) return &devices[likely];
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
