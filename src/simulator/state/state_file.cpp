#include "simulator/state/state_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace simulator {

namespace {

// Far beyond all bytes that SQLite reads, writes or locks.
constexpr int64_t FirstLockedByte = int64_t{1} << 41;
static_assert(sizeof(off_t) == sizeof FirstLockedByte);

[[noreturn]] void failWithErrno(const char* what) {
  throw StateError(std::string(what) + ": " + std::strerror(errno) + StateError::Advice);
}

void syncDirectory(const std::string& path) {
  const base::Descriptor directory(path, O_RDONLY | O_DIRECTORY);
  if (!directory.isOpen() || fsync(directory.number()) != 0) failWithErrno("its directory cannot be synced");
}

// One by one, unlike std::filesystem: each is private from the start, and synced into the one above it.
void makeDirectories(const std::string& path) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    const std::string directory = path.substr(0, slash);
    if (mkdir(directory.c_str(), 0700) == 0)
      syncDirectory(directory + "/..");
    else if (errno != EEXIST)
      failWithErrno("its directory cannot be created");
  }
}

// These locks belong to the open file, not to the process, so closing another descriptor of the file, as SQLite does,
// does not release them.
struct flock lockOn(int32_t device, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = FirstLockedByte + device;
  lock.l_len = 1;
  return lock;
}

}  // namespace

bool StateFile::exists() const {
  // Not by opening it: closing any descriptor of the file would release the locks that SQLite has on it.
  struct stat status {};
  if (lstat(path().c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return false;
    failWithErrno("cannot be opened");
  }
  if (S_ISLNK(status.st_mode)) throw StateError("is a symbolic link, which is not followed");
  if (!S_ISREG(status.st_mode)) throw StateError("is not a regular file");
  return true;
}

void StateFile::create() const {
  if (path().empty()) throw StateError("VELQ_STATE, XDG_STATE_HOME and HOME name no file for it");
  if (exists()) return;
  if (place_.makesDirectories) makeDirectories(path());
  // Without O_EXCL: another process may create it at the same time.
  if (!base::Descriptor(path(), O_CREAT | O_RDWR | O_NOFOLLOW, 0600).isOpen()) failWithErrno("cannot be created");
}

std::string StateFile::resolvedPath() const {
  const size_t slash = path().rfind('/');
  const std::string directory = slash == std::string::npos ? "." : path().substr(0, slash + 1);
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(directory.c_str(), nullptr), std::free);
  if (!resolved) failWithErrno("its directory cannot be opened");
  return std::string(resolved.get()) + "/" + path().substr(slash == std::string::npos ? 0 : slash + 1);
}

void StateFile::openForLocks() {
  if (descriptor_.isOpen()) return;
  // For writing, which a write lock needs. Never closed before the database, whose locks would go with it.
  descriptor_ = base::Descriptor(path(), O_RDWR | O_NOFOLLOW);
  if (descriptor_.isOpen()) return;
  const int problem = errno;
  const bool isReadable = access(path().c_str(), R_OK) == 0;
  errno = problem;
  failWithErrno(isReadable ? "cannot be opened for writing" : "cannot be opened");
}

bool StateFile::hold(int32_t device) {
  if (const auto held = holds_.find(device); held != holds_.end()) {
    ++held->second;
    return true;
  }
  create();
  openForLocks();
  struct flock lock = lockOn(device, F_WRLCK);
  if (fcntl(descriptor_.number(), F_OFD_SETLK, &lock) == 0) return holds_.emplace(device, 1).second;
  // Systems report a lock of another process as either.
  if (errno != EAGAIN && errno != EACCES) failWithErrno("cannot be locked");
  return false;
}

void StateFile::release(int32_t device) {
  const auto held = holds_.find(device);
  assert(held != holds_.end());
  if (--held->second > 0) return;
  holds_.erase(held);
  struct flock lock = lockOn(device, F_UNLCK);
  fcntl(descriptor_.number(), F_OFD_SETLK, &lock);
}

bool StateFile::isHeldElsewhere(int32_t device) {
  if (!exists()) return false;
  openForLocks();
  // The locks of this descriptor do not conflict with itself, so those that are found are of other processes.
  struct flock lock = lockOn(device, F_WRLCK);
  if (fcntl(descriptor_.number(), F_OFD_GETLK, &lock) != 0) failWithErrno("cannot be locked");
  return lock.l_type != F_UNLCK;
}

}  // namespace simulator
