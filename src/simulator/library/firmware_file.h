// Firmware files: any payload with the standard 16-byte suffix of DFU 1.1.
#pragma once

#include <cstdint>
#include <string>

#include "simulator/model/status.h"

namespace simulator {

/// What the suffix says.
struct FirmwareFile {
  uint16_t version;  ///< bcdDevice
  uint16_t product;  ///< idProduct
};

/// Reads `path` whole and checks its suffix and CRC. Returns Success with `file` filled, ErrorFileUnreadable, or
/// ErrorFirmwareWrongDevice for a file without a valid suffix or of 4 GiB and more.
ErrorCode readFirmwareFile(const std::string& path, FirmwareFile& file);

}  // namespace simulator
