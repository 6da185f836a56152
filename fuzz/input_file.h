// The input as a file that a reader can open.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

/// Makes a file in memory hold `input` and returns its path, the same at each call.
inline std::string fileOf(std::span<const uint8_t> input) {
  static const int file = memfd_create("input", MFD_CLOEXEC);
  if (ftruncate(file, 0) != 0 || pwrite(file, input.data(), input.size(), 0) != static_cast<ssize_t>(input.size()))
    std::abort();
  return "/proc/self/fd/" + std::to_string(file);
}
