// Firmware files that are not what they should be.
#include "simulator/library/firmware_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>

using namespace Automation::Velq;

namespace {

const std::string Path = testing::TempDir() + "qutil-firmware-" + std::to_string(getpid());

ErrorCode statusOf(const std::string& bytes) {
  std::ofstream(Path, std::ios::binary) << bytes;
  simulator::FirmwareFile file{};
  return simulator::readFirmwareFile(Path, file);
}

std::string withCrc(std::string bytes) {
  const auto* const data = reinterpret_cast<const Bytef*>(bytes.data());
  const uLong crc = ~crc32(0, data, static_cast<uInt>(bytes.size() - 4));
  for (size_t i = 0; i < 4; ++i) bytes[bytes.size() - 4 + i] = static_cast<char>(crc >> 8 * i);
  return bytes;
}

TEST(FirmwareFileTest, AnyDamageIsFound) {
  const std::string good =
      withCrc(std::string("payload\x11\x01\x16\x12\xFF\xFF\x00\x01"
                          "UFD\x10"
                          "crc.",
                          23));
  ASSERT_EQ(statusOf(good), Success);
  for (size_t i = 0; i < good.size(); ++i) {
    EXPECT_EQ(statusOf(good.substr(0, i)), ErrorFirmwareWrongDevice) << "first " << i;
    EXPECT_EQ(statusOf(good.substr(0, i) + char(good[i] ^ 1) + good.substr(i + 1)), ErrorFirmwareWrongDevice) << i;
  }
  // The format's version, its signature and the suffix's length, the CRC being right.
  for (size_t i = good.size() - 10; i < good.size() - 4; ++i)
    EXPECT_EQ(statusOf(withCrc(good.substr(0, i) + char(good[i] ^ 4) + good.substr(i + 1))), ErrorFirmwareWrongDevice)
        << i;
  EXPECT_EQ(statusOf(withCrc(good.substr(7))), Success) << "no payload";
  EXPECT_EQ(statusOf(withCrc(good.substr(0, 13) + '\x1A' + good.substr(14))), Success) << "the other format";
  std::filesystem::remove(Path);
}

TEST(FirmwareFileTest, WhatIsNoFile) {
  std::filesystem::remove(Path);
  simulator::FirmwareFile file{};
  mkfifo((Path + "-fifo").c_str(), 0600);
  for (const std::string& path : {Path, std::string(), Path + "-fifo", std::string("/"), std::string("/dev/zero")})
    EXPECT_EQ(simulator::readFirmwareFile(path, file), ErrorFileUnreadable) << path;
  std::filesystem::remove(Path + "-fifo");
}

}  // namespace
