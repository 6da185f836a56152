#include "compliance/library.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace compliance {

namespace {

constexpr const char* EntryName = "CvxQuellisLibInitialize";

decltype(&CvxQuellisLibInitialize) entry = nullptr;

}  // namespace

Library::Library(const std::string& path) : path_(std::filesystem::absolute(path)) {
  // Global, so that a preloaded probe finds the library behind itself.
  void* const handle = dlopen(path_.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (handle == nullptr) throw std::runtime_error(dlerror());
  if (dlsym(handle, EntryName) == nullptr) throw std::runtime_error(path_ + ": does not export " + EntryName);
  void* const first = dlsym(RTLD_DEFAULT, EntryName);
  entry = reinterpret_cast<decltype(entry)>(first);
  Dl_info place{};
  if (dladdr(first, &place) != 0) answeringPath_ = place.dli_fname;
}

const Automation::Velq::LibraryTable* Library::tables() const { return CvxQuellisLibInitialize(); }

}  // namespace compliance

// Stands in this program for what the loader gives a tool that is linked to its library.
const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() {
  static const Automation::Velq::LibraryTable* const tables = compliance::entry();
  return tables;
}
