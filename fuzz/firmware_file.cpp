// Reads any bytes as a firmware file, as they are and with a CRC that fits.
#include "simulator/firmware_file.h"

#include <zlib.h>

#include <vector>

#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  simulator::FirmwareFile file{};
  readFirmwareFile(fileOf({data, size}), file);
  if (size < 4) return 0;
  std::vector<uint8_t> bytes(data, data + size);
  const uLong crc = ~crc32(0, data, static_cast<uInt>(size - 4));
  for (size_t i = 0; i < 4; ++i) bytes[size - 4 + i] = static_cast<uint8_t>(crc >> 8 * i);
  readFirmwareFile(fileOf(bytes), file);
  return 0;
}
