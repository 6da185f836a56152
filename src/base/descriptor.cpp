#include "base/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace base {

namespace {

// Repeats what a signal interrupted.
template <typename Call>
auto complete(Call call) {
  auto result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

// Keeps 0, 1 and 2 from being given out while it lives. To move a file from there afterwards would not do: closing any
// descriptor of a file drops the locks that SQLite holds on it.
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
  if (standard.areTaken()) number_ = complete([&] { return open(path.c_str(), flags | O_CLOEXEC, mode); });
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

Descriptor::~Descriptor() {
  if (isOpen()) close(number_);
}

int64_t Descriptor::length() const {
  struct stat status {};
  return isOpen() && fstat(number_, &status) == 0 && S_ISREG(status.st_mode) ? int64_t{status.st_size} : -1;
}

bool Descriptor::write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = complete([&] { return ::write(number_, bytes.data(), bytes.size()); });
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

int64_t Descriptor::read(void* bytes, size_t count) const {
  size_t done = 0;
  while (done < count) {
    const ssize_t got = complete([&] { return ::read(number_, static_cast<char*>(bytes) + done, count - done); });
    if (got < 0) return -1;
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  return static_cast<int64_t>(done);
}

}  // namespace base
