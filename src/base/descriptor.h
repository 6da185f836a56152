#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace base {

/// An open file. Never descriptor 0, 1 or 2: those are the tool's, and where it was started without one of them, what
/// it prints must not end up here.
class Descriptor {
 public:
  /// Opens nothing.
  Descriptor() = default;

  /// As open(2), not inherited by other programs. Whether it worked shows isOpen; errno says why it did not.
  Descriptor(const std::string& path, int flags, mode_t mode = 0);

  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

  /// The length of a regular file, -1 for anything else.
  int64_t length() const;

  /// Writes all bytes. False on an error, with errno.
  bool write(std::string_view bytes) const;

  /// Reads up to `count` bytes, fewer only at the end of the file. -1 on an error, with errno.
  int64_t read(void* bytes, size_t count) const;

 private:
  int number_ = -1;
};

}  // namespace base
