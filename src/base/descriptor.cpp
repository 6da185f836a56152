#include "base/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace base {

namespace {

// Reserves 0, 1 and 2 while it lives. A file cannot be moved from there afterwards instead: closing any descriptor of a
// file releases the locks that SQLite holds on it.
class StandardNumbers {
 public:
  StandardNumbers() {
    int number = 0;
    while ((number = open("/", O_PATH | O_CLOEXEC)) >= 0 && number <= STDERR_FILENO) isOurs_[number] = true;
    areTaken_ = number >= 0;
    if (areTaken_) close(number);
  }
  ~StandardNumbers() {
    const int problem = errno;
    for (int number = 0; number <= STDERR_FILENO; ++number) {
      if (isOurs_[number]) close(number);
    }
    // The errno of the file that was not opened.
    errno = problem;
  }
  StandardNumbers(const StandardNumbers&) = delete;
  StandardNumbers& operator=(const StandardNumbers&) = delete;

  bool areTaken() const { return areTaken_; }

 private:
  bool isOurs_[STDERR_FILENO + 1] = {};
  bool areTaken_ = false;
};

}  // namespace

Descriptor::Descriptor(const std::string& path, int flags, mode_t mode) {
  const StandardNumbers standard;
  if (standard.areTaken()) number_ = uninterrupted([&] { return open(path.c_str(), flags | O_CLOEXEC, mode); });
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
