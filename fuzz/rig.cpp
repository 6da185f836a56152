// Reads any bytes as a rig: it is one that keeps its promises, or it is refused in one line.
#include "simulator/rig/rig.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <span>

#include "text/one_line.h"

using namespace simulator;

namespace {

// The same path at each call.
std::string fileOf(std::span<const uint8_t> input) {
  static const int file = memfd_create("input", MFD_CLOEXEC);
  if (ftruncate(file, 0) != 0 || pwrite(file, input.data(), input.size(), 0) != static_cast<ssize_t>(input.size()))
    std::abort();
  return "/proc/self/fd/" + std::to_string(file);
}

void require(bool holds) {
  if (!holds) std::abort();
}

void check(const Rig& rig) {
  for (const Device& device : rig.devices) {
    require(device.number >= 0 && rig.find(device.number) == &device);
    if (!device.children) continue;
    require(!device.children->empty());
    for (const int32_t child : *device.children) require(rig.find(child) != nullptr && !rig.find(child)->children);
  }
}

bool isControl(char c) { return static_cast<unsigned char>(c) < ' '; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    check(readRigFile(fileOf({data, size})));
  } catch (const RigError& error) {
    // As it is printed: what the rig holds is in the message as it is.
    const std::string line = text::oneLine(error.what());
    require(line.find(": ") != std::string::npos && std::none_of(line.begin(), line.end(), isControl));
  }
  return 0;
}
