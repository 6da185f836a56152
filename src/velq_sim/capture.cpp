#include "velq_sim/capture.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <set>
#include <utility>

#include "base/descriptor.h"
#include "reading/devices.h"
#include "simulator/rig/rig_writer.h"
#include "text/utf8.h"
#include "velq_sim/device_reader.h"
#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

using simulator::Device;
using simulator::Rig;

// Reads the devices that the library lists.
Rig readDevices() {
  reading::Array* const list = Automation::Velq::DeviceCtrl_getInstalledDevices();
  if (list == nullptr) throw Failure(Failed, "the device library returns no list of devices");
  const std::vector<std::wstring> descriptions = reading::descriptionsIn(list);
  if (descriptions.empty()) throw Failure(Failed, "the device library lists no devices");
  reportMissingControls();
  Rig rig;
  for (const std::wstring& description : descriptions) {
    std::optional<Device> device = readDevice(description, rig);
    if (!device) continue;
    rig.positions.emplace(device->number, rig.devices.size());
    rig.devices.push_back(std::move(*device));
  }
  if (rig.devices.empty()) throw Failure(Failed, "the device library lists no device that can be read");
  return rig;
}

// Why a rig cannot have the device as a child beside `siblings`; null when it can. `taken` has all children so far.
const char* problemWithChild(const Rig& rig, int32_t number, const std::vector<int32_t>& siblings,
                             const std::set<int32_t>& taken) {
  const Device* const child = rig.find(number);
  if (child == nullptr) return "is not listed";
  if (child->children) return "is a fusion device";
  if (taken.contains(number)) return "belongs to a fusion device already";
  if (!siblings.empty() && child->productId != rig.find(siblings.front())->productId)
    return "has another product id than the first child";
  return nullptr;
}

// Leaves out children that a rig cannot have.
void repairChildren(Rig& rig, Device& device, std::set<int32_t>& taken) {
  std::vector<int32_t> kept;
  for (const int32_t number : *device.children) {
    if (const char* const problem = problemWithChild(rig, number, kept, taken))
      report(text::fromUtf8(device.description), "child " + std::to_string(number) + " " + problem + ", left out");
    else
      kept.push_back(*taken.insert(number).first);
  }
  device.children = kept;
}

// Gives the fusion devices the form that a rig has, and leaves out product ids that it has unless another is given.
void repair(Rig& rig) {
  std::set<int32_t> taken;
  for (Device& device : rig.devices) {
    if (device.children) repairChildren(rig, device, taken);
  }
  // Only now: a fusion device is no child of another, even if it has lost all of its own.
  for (Device& device : rig.devices) {
    if (device.children && device.children->empty()) {
      report(text::fromUtf8(device.description),
             "is a fusion device without children; on the copy it is a plain device");
      device.children.reset();
    }
    const int32_t usual = device.children ? rig.find(device.children->front())->productId.value_or(0) : 0;
    if (device.productId == usual) device.productId.reset();
  }
}

std::string capturedText() {
  Rig rig = readDevices();
  repair(rig);
  const std::string text = simulator::textOf(rig);
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
