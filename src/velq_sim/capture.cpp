#include "velq_sim/capture.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <set>

#include "base/descriptor.h"
#include "reading/devices.h"
#include "simulator/rig/rig.h"
#include "text/utf8.h"
#include "velq_sim/device_reader.h"
#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

// Reads the devices that the library lists.
Devices readDevices() {
  reading::Array* const list = Automation::Velq::DeviceCtrl_getInstalledDevices();
  if (list == nullptr) throw Failure(Failed, "the device library returns no list of devices");
  const std::vector<std::wstring> descriptions = reading::descriptionsIn(list);
  if (descriptions.empty()) throw Failure(Failed, "the device library lists no devices");
  reportMissingControls();
  Devices devices;
  for (const std::wstring& description : descriptions) addDevice(description, devices);
  if (devices.all.empty()) throw Failure(Failed, "the device library lists no device that can be read");
  return devices;
}

void reportRepair(const Json& device, const std::string& message) {
  report(text::fromUtf8(device["description"].get<std::string>()), message);
}

// Why a rig cannot have the device as a child; null when it can. `taken` has all children so far, `productId` is that
// of its siblings, null for the first child.
const char* problemWithChild(const Devices& devices, int32_t number, const Json& productId,
                             const std::set<int32_t>& taken) {
  const auto child = devices.byNumber.find(number);
  if (child == devices.byNumber.end()) return "is not listed";
  if (child->second->contains("children")) return "is a fusion device";
  if (taken.contains(number)) return "belongs to a fusion device already";
  if (!productId.is_null() && child->second->at("product_id") != productId)
    return "has another product id than the first child";
  return nullptr;
}

// Leaves out children that a rig cannot have, and the product id that a rig has because of them.
void repairChildren(const Devices& devices, Json& device, std::set<int32_t>& taken) {
  Json kept = Json::array(), productId;
  for (const int32_t number : device["children"]) {
    if (const char* const problem = problemWithChild(devices, number, productId, taken)) {
      reportRepair(device, "child " + std::to_string(number) + " " + problem + ", left out");
      continue;
    }
    productId = devices.byNumber.at(number)->at("product_id");
    kept.push_back(*taken.insert(number).first);
  }
  device["children"] = kept;
  if (device["product_id"] == productId) device.erase("product_id");
}

// Gives the fusion devices the form that a rig has, and leaves out product ids that it has unless another is given.
void repair(Devices& devices) {
  std::set<int32_t> taken;
  for (Json& device : devices.all) {
    if (device.contains("children")) repairChildren(devices, device, taken);
  }
  // Only now: a fusion device is no child of another, even if it has lost all of its own.
  for (Json& device : devices.all) {
    if (device.contains("children") && device["children"].empty()) {
      reportRepair(device, "is a fusion device without children; on the copy it is a plain device");
      device.erase("children");
    }
    if (!device.contains("children") && device["product_id"] == "0x0") device.erase("product_id");
  }
}

std::string capturedText() {
  Devices devices = readDevices();
  repair(devices);
  const std::string text = Json{{"devices", devices.all}}.dump(2) + "\n";
  // What is read can be a rig in each part but not as a whole, for example longer than a rig may be.
  try {
    simulator::readRig(text);
  } catch (const simulator::RigError& error) {
    throw Failure(Failed, std::string("the captured devices are not a valid rig: ") + error.what());
  }
  return text;
}

[[noreturn]] void fail(const std::string& path, int problem) {
  const char* const reason = problem == EEXIST ? "already exists" : std::strerror(problem);
  throw Failure(Failed, path + ": " + reason + "; nothing was written");
}

// Linked to its name once it is whole: link(2) fails where the name is taken, rename(2) would replace that file.
void writeNew(const std::string& path, const std::string& text) {
  const std::string temporary = path + "." + std::to_string(getpid());
  // The umask decides who can read it, unlike a state: rigs are for sharing.
  const base::Descriptor file(temporary, O_CREAT | O_EXCL | O_WRONLY, 0666);
  if (!file.isOpen()) fail(errno == EEXIST ? temporary : path, errno);
  const bool isWritten = file.write(text) && fsync(file.number()) == 0 && link(temporary.c_str(), path.c_str()) == 0;
  const int problem = errno;
  unlink(temporary.c_str());
  if (!isWritten) fail(path, problem);
}

}  // namespace

void capture(const std::string& file) {
  const bool isFile = file != "-";
  // Ahead of the work, which may take long. The link decides.
  if (isFile && access(file.c_str(), F_OK) == 0) fail(file, EEXIST);
  const std::string text = capturedText();
  // A file that grows beyond the limit of the user is an error like others, not the end of the process.
  std::signal(SIGXFSZ, SIG_IGN);
  if (isFile)
    writeNew(file, text);
  else
    std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace velq_sim
