#include "base/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace base {

Descriptor::Descriptor(const std::string& path, int flags, mode_t mode) {
  // Reserves 0, 1 and 2. A file cannot be moved from there afterwards instead: closing any descriptor of a file
  // releases the locks that SQLite holds on it.
  bool isReserved[STDERR_FILENO + 1] = {};
  int lowest = 0;
  while ((lowest = open("/", O_PATH | O_CLOEXEC)) >= 0 && lowest <= STDERR_FILENO) isReserved[lowest] = true;
  if (lowest >= 0) {
    close(lowest);
    number_ = uninterrupted([&] { return open(path.c_str(), flags | O_CLOEXEC, mode); });
  }
  // The errno of the file that was not opened.
  const int problem = errno;
  for (int number = 0; number <= STDERR_FILENO; ++number) {
    if (isReserved[number]) close(number);
  }
  errno = problem;
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

Descriptor::~Descriptor() {
  if (isOpen()) close(number_);
}

std::optional<int64_t> Descriptor::length() const {
  struct stat status {};
  if (!isOpen() || fstat(number_, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_size;
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = uninterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

int64_t Descriptor::read(void* bytes, size_t count) const {
  size_t done = 0;
  while (done < count) {
    const ssize_t got = uninterrupted([&] { return ::read(number_, static_cast<char*>(bytes) + done, count - done); });
    if (got < 0) return -1;
    // Only this is the end of the file: a pipe can return fewer bytes at any time.
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  return static_cast<int64_t>(done);
}

}  // namespace base
