#include "simulator/library/firmware_file.h"

#include <fcntl.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "base/descriptor.h"

namespace simulator {

using namespace Automation::Velq;

namespace {

// The end of the file. Its fields are little-endian, and offsets count from its first byte.
constexpr size_t SuffixLength = 16;
constexpr size_t CrcLength = 4;
// More than any chip has room for.
constexpr int64_t LongestFile = UINT32_MAX;
using Suffix = std::array<unsigned char, SuffixLength>;

unsigned word(const Suffix& suffix, size_t offset) { return suffix[offset] | unsigned{suffix[offset + 1]} << 8U; }

bool isDfuSuffix(const Suffix& suffix) {
  const unsigned format = word(suffix, 6);
  // Two versions of the format are in use, with the same fields. The signature "DFU" is stored backwards.
  return (format == 0x0100 || format == 0x011A) && std::memcmp(&suffix[8], "UFD", 3) == 0 && suffix[11] == SuffixLength;
}

bool readExactly(const base::Descriptor& descriptor, unsigned char* bytes, size_t count) {
  return std::cmp_equal(descriptor.read(bytes, count), count);
}

}  // namespace

ErrorCode readFirmwareFile(const std::string& path, FirmwareFile& file) {
  // O_NONBLOCK, because a FIFO would wait for a writer.
  const base::Descriptor descriptor(path, O_RDONLY | O_NONBLOCK);
  const std::optional<int64_t> length = descriptor.length();
  if (!length) return ErrorFileUnreadable;
  if (std::cmp_less(*length, SuffixLength) || *length > LongestFile) return ErrorFirmwareWrongDevice;

  // In chunks: a file can be larger than the memory.
  std::vector<unsigned char> chunk(1 << 16);
  uLong crc = crc32(0, nullptr, 0);
  for (size_t left = static_cast<size_t>(*length) - SuffixLength; left > 0;) {
    const size_t count = std::min(left, chunk.size());
    if (!readExactly(descriptor, chunk.data(), count)) return ErrorFileUnreadable;
    crc = crc32(crc, chunk.data(), static_cast<uInt>(count));
    left -= count;
  }
  Suffix suffix;
  if (!readExactly(descriptor, suffix.data(), suffix.size())) return ErrorFileUnreadable;
  crc = crc32(crc, suffix.data(), SuffixLength - CrcLength);

  // The suffix contains the CRC without the final inversion that zlib makes.
  const uLong stored = word(suffix, 12) | static_cast<uLong>(word(suffix, 14)) << 16U;
  if (!isDfuSuffix(suffix) || stored != (crc ^ 0xFFFFFFFFU)) return ErrorFirmwareWrongDevice;
  file = {.version = static_cast<uint16_t>(word(suffix, 0)), .product = static_cast<uint16_t>(word(suffix, 2))};
  return Success;
}

}  // namespace simulator
