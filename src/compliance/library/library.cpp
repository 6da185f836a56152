#include "compliance/library/library.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

#include "compliance/library/watch.h"

namespace compliance {

Library::Library(const std::string& path, Report& report) : path_(std::filesystem::absolute(path)), report_(report) {}

void Library::load() {
  startWatching(report_);
  // Global, so that a preloaded probe finds the library behind itself.
  void* const handle = callWatched("dlopen()", [&] { return dlopen(path_.c_str(), RTLD_NOW | RTLD_GLOBAL); });
  if (handle == nullptr) throw std::runtime_error(dlerror());
  if (dlsym(handle, Entry) == nullptr) throw std::runtime_error(path_ + ": does not export " + Entry);
  void* const first = dlsym(RTLD_DEFAULT, Entry);
  Dl_info place{};
  if (dladdr(first, &place) != 0 && place.dli_fname != path_) report_.layer.set(place.dli_fname);
  tables_ = callWatched(Entry, reinterpret_cast<decltype(&CvxQuellisLibInitialize)>(first));
  watch(tables_);
}

}  // namespace compliance

// In a tool the loader binds this to the library that the tool is linked to.
const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() { return compliance::watchedTables(); }
