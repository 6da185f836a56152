#include "simulator/state/sqlite.h"

#include <dlfcn.h>

#include <string>

#include "simulator/state/state_file.h"

namespace simulator {

void* Sqlite::load() {
  void* const library = dlopen("libsqlite3.so.0", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw StateError(std::string("cannot be used: ") + dlerror());
  return library;
}

void* Sqlite::find(const char* function) const {
  void* const found = dlsym(library_, function);
  if (found == nullptr) throw StateError(std::string("cannot be used: ") + dlerror());
  return found;
}

const Sqlite& sqlite() {
  static const Sqlite functions;
  return functions;
}

}  // namespace simulator
