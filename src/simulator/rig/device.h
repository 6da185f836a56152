// An installed device and all that a library can report about it, as in a rig. Strings are UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace simulator {

/// The version of a chip's firmware: binary coded decimal, 0x0123 is version 1.23, or any other string, which is older
/// than every number. In a rig a string that begins with "0x" is a number.
using FirmwareVersion = std::variant<uint16_t, std::string>;

/// The version as reports show it: "1.23" for 0x0123.
std::string shown(const FirmwareVersion& version);

/// One programmable chip.
struct Chip {
  static constexpr const char* UsualNotice = "Restart the device after the overwrite.";

  std::string description;
  FirmwareVersion version;
  std::string notice;
  std::optional<std::string> password;
  /// Of successive polls of an overwrite; never empty. ProgressDone or more ends it; ProgressAborted,
  /// ProgressNothingLoaded and ProgressBusy, in the first poll, are failures.
  std::vector<int32_t> progress = {0, 25, 50, 75, 100};
};

/// One adjusting code that a calibration finds.
struct AdjustingCode {
  std::string name;
  uint32_t inUse = 0;
  uint32_t backup = 0;
  std::vector<uint32_t> walk = {inUse};  ///< codes of successive polls; never empty
  bool fails = false;                    ///< how the walk ends
};

/// One step of a solution that the operator prepares by hand.
struct Section {
  std::string description;
  std::string instruction;
  std::vector<AdjustingCode> items;
};

/// One calibration procedure.
struct Solution {
  std::string name;
  std::string description;
  std::string instruction;
  std::vector<Section> sections;
};

/// One installed device. An absent member is one that the device does not have.
struct Device {
  static constexpr int32_t UsualHighestBoardId = 15;

  int32_t number = 0;                ///< 0 and above
  std::optional<int32_t> productId;  ///< 0, or of a fusion device its first child's, unless given
  int32_t boardId = 0;
  int32_t highestBoardId = UsualHighestBoardId;  ///< -1: the board id cannot be set
  std::string description;
  std::optional<std::string> boardVersion;
  std::optional<std::string> driverVersion;
  std::optional<std::string> location;
  std::optional<std::vector<uint64_t>> baseAddresses;
  std::optional<std::vector<int32_t>> interrupts;
  std::optional<std::vector<Chip>> firmware;
  std::optional<std::vector<Solution>> calibration;
  std::optional<std::vector<int32_t>> children;  ///< of a fusion device, in the order in which it lists them
};

}  // namespace simulator
