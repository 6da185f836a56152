// The rig: the installed devices and all that can be asked about them, as its file gives them. What commands change is
// in the state.
#pragma once

#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// One programmable chip. Texts are UTF-8 here and below.
struct Chip {
  std::string description;
  uint16_t version;  ///< binary coded decimal: 0x0123 is version 1.23
  std::string notice;
  std::optional<std::string> password;
  std::vector<int32_t> progress;  ///< what successive polls of an overwrite report; never empty
};

/// One adjusting code that a calibration works out.
struct AdjustingCode {
  std::string name;
  uint32_t inUse;
  uint32_t backup;
  std::vector<uint32_t> walk;  ///< what successive polls report; never empty
  bool fails;                  ///< how the walk ends
};

struct Section {
  std::string description;
  std::string instruction;
  std::vector<AdjustingCode> items;
};

struct Solution {
  std::string name;
  std::string description;
  std::string instruction;
  std::vector<Section> sections;
};

/// One installed device. What is null or absent is something that the device does not have. Texts and lists are the
/// rig's.
struct Device {
  int32_t number;  ///< 0 and above
  int32_t productId = 0;
  int32_t boardId = 0;
  int32_t highestBoardId = 15;  ///< -1: the board id cannot be set
  std::string_view description;
  const char* boardVersion = nullptr;
  const char* driverVersion = nullptr;
  const char* location = nullptr;
  std::optional<std::span<const uint64_t>> baseAddresses;
  std::optional<std::span<const int32_t>> interrupts;
  std::unique_ptr<std::vector<Chip>> firmware;
  std::unique_ptr<std::vector<Solution>> calibration;
  std::unique_ptr<std::vector<int32_t>> children;  ///< of a fusion device
};

/// The texts and lists of the devices, one behind the other: of a large rig they would be most of its memory otherwise.
/// A copy lives as long as this object, and as what it is moved to.
class RigStorage {
 public:
  /// A terminated copy.
  const char* keep(const std::string& text) { return keepList(std::span(text.c_str(), text.size() + 1)).data(); }

  template <typename Value>
  std::span<const Value> keepList(std::span<const Value> list) {
    auto* const copy = static_cast<Value*>(memory_->allocate(list.size_bytes(), alignof(Value)));
    std::uninitialized_copy(list.begin(), list.end(), copy);
    return {copy, list.size()};
  }

 private:
  std::unique_ptr<std::pmr::monotonic_buffer_resource> memory_ =
      std::make_unique<std::pmr::monotonic_buffer_resource>();
};

/// The devices in order of their numbers, which are distinct. Children are listed, are no fusion devices, belong to one
/// group and share one product id.
struct Rig {
  RigStorage storage;
  std::vector<Device> devices;

  /// The device with this number; null when there is none.
  const Device* find(int32_t number) const;
};

/// A rig that cannot be used. what() is "PLACE: what is wrong there", without the file's name.
class RigError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads a rig file. Throws RigError.
Rig readRigFile(const std::string& path);

/// The rig that is built into the library.
Rig readBuiltInRig();

}  // namespace simulator
