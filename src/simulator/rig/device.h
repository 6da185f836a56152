// An installed device and all that can be asked about it, as a rig gives it. Texts are UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/// One programmable chip.
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

/// One installed device. What is absent is something that the device does not have.
struct Device {
  int32_t number = 0;  ///< 0 and above
  int32_t productId = 0;
  int32_t boardId = 0;
  int32_t highestBoardId = 15;  ///< -1: the board id cannot be set
  std::string description;
  std::optional<std::string> boardVersion;
  std::optional<std::string> driverVersion;
  std::optional<std::string> location;
  std::optional<std::vector<uint64_t>> baseAddresses;
  std::optional<std::vector<int32_t>> interrupts;
  std::optional<std::vector<Chip>> firmware;
  std::optional<std::vector<Solution>> calibration;
  std::optional<std::vector<int32_t>> children;  ///< of a fusion device
};

}  // namespace simulator
