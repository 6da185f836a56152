#include "simulator/state/sqlite.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace simulator {

namespace {

void* checked(void* found) {
  if (found == nullptr) throw StateError(std::string("cannot be used: ") + dlerror());
  return found;
}

}  // namespace

// By its versioned name: the other comes with development files. Local: a tool may have an SQLite of its own.
void* Sqlite::load() { return checked(dlopen("libsqlite3.so.0", RTLD_NOW | RTLD_LOCAL)); }

void* Sqlite::find(const char* function) const { return checked(dlsym(library_, function)); }

const Sqlite& sqlite() {
  static const Sqlite functions;
  return functions;
}

StateError sqliteError(sqlite3* database) {
  // Ahead of all calls, which can change it.
  const int lastError = errno;
  const int status = sqlite().extended_errcode(database);
  const int kind = status & 0xFF;
  // SQLite takes a file system without locks for another process that has the lock.
  const bool lacksLocks = kind == SQLITE_BUSY && lastError == ENOLCK;
  const bool isLock = lacksLocks || kind == SQLITE_PERM || status == SQLITE_IOERR_LOCK ||
                      status == SQLITE_IOERR_RDLOCK || status == SQLITE_IOERR_UNLOCK;
  const bool isDirectory = status == SQLITE_READONLY_DIRECTORY;
  const bool isOpening = kind == SQLITE_CANTOPEN;
  const char* const what = isLock        ? "cannot be locked: "
                           : isDirectory ? "its directory cannot be written: "
                           : isOpening   ? "cannot be opened: "
                                         : "cannot be used: ";
  // The system's reason says more than SQLite's name for it, where it is one of this call.
  const bool isSystems = isLock || isOpening || kind == SQLITE_IOERR;
  const int systems = isSystems ? sqlite().system_errno(database) : 0;
  const int reason = lacksLocks ? ENOLCK : isDirectory ? EACCES : systems;
  return StateError(what + std::string(reason == 0 ? sqlite().errmsg(database) : std::strerror(reason)) +
                    StateError::Advice);
}

}  // namespace simulator
