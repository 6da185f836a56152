#pragma once

#include <sys/types.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace base {

/// Repeats a system call for as long as signals interrupt it, and returns its result.
template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

/// Writes all bytes. False on an error, with errno. Safe in a signal handler.
bool writeAll(int descriptor, std::string_view bytes);

/// An open file. Never descriptor 0, 1 or 2: those are the tool's, and if it was started without one of them, its
/// output must not end up here.
class Descriptor {
 public:
  /// No file.
  Descriptor() = default;

  /// As open(2), not inherited by other programs. On failure isOpen() is false and errno says why.
  Descriptor(const std::string& path, int flags, mode_t mode = 0);

  /// An open file above 2, which is closed with this object.
  explicit Descriptor(int number) : number_(number) {}

  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

  /// The length of a regular file, in bytes; nothing for any other file.
  std::optional<int64_t> length() const;

  /// As writeAll.
  bool write(std::string_view bytes) const { return writeAll(number_, bytes); }

  /// Reads up to `count` bytes, fewer only at the end of the file. -1 on an error, with errno.
  int64_t read(void* bytes, size_t count) const;

 private:
  int number_ = -1;
};

}  // namespace base
