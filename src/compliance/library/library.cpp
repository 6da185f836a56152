#include "compliance/library/library.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <typeinfo>

#include "base/demangled.h"
#include "compliance/library/surroundings.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

// The watched functions have no room for arguments of ours.
const LibraryTable* watchedLibrary = nullptr;
Report* watchedReport = nullptr;

// As they were before the library was loaded.
std::optional<Surroundings> surroundingsBefore;

// What has become of the process that the tool would notice; empty when all is well.
std::string disturbance() {
  // What the library has printed may still be in the buffer.
  std::fflush(stdout);
  int unread = 0;
  if (ioctl(STDOUT_FILENO, FIONREAD, &unread) == 0 && unread > 0)
    return "writes to standard output, which is the tool's";
  return surroundingsBefore->disturbance();
}

// Whether an operation, when it is done, has changed something that others may want to lock.
bool isChange(std::string_view operation) {
  return operation.starts_with("DeviceCtrl_set") || operation == "FirmwareItem_loadFile" ||
         (operation.starts_with("CvxFusionDevice") && !operation.ends_with("GetChildren"));
}

// Notes that `name` is being called; at the end of the call, also how long it took, and what the library has done to
// the process meanwhile that is not its business.
class Call {
 public:
  explicit Call(const char* name) : name_(name) {
    watchedReport->operation.set(name);
    watchedReport->isCalling = true;
  }

  ~Call() {
    const int64_t duration = std::chrono::nanoseconds(Clock::now() - begin_).count();
    if (duration > watchedReport->slowest) {
      watchedReport->slowest = duration;
      watchedReport->slowestOperation.set(name_);
    }
    if (watchedReport->disturbance.isEmpty())
      if (const std::string what = disturbance(); !what.empty())
        watchedReport->disturbance.set(what + ", during " + name_);
    if (isChange(name_)) watchedReport->change.set(name_);
    watchedReport->isCalling = false;
    ++watchedReport->calls;
  }

 private:
  using Clock = std::chrono::steady_clock;

  const char* name_;
  const Clock::time_point begin_ = Clock::now();
};

// Notes the exception that is being handled, and ends the process.
[[noreturn]] void endWithException() {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  const std::string name = type == nullptr ? "what is no C++ exception" : base::demangled(type->name());
  watchedReport->isCalling = true;
  try {
    throw;
  } catch (const std::exception& exception) {
    watchedReport->thrown.set(name + ": " + exception.what());
  } catch (...) {
    watchedReport->thrown.set(name);
  }
  _exit(0);
}

template <typename Operation>
auto callWatched(const char* name, const Operation& operation) {
  try {
    const Call call(name);
    return operation();
  } catch (...) {
    endWithException();
  }
}

constexpr FunctionTable WatchedFunctions = {
#define VELQ_FUNCTION(result, name, parameters, arguments)                                \
  .name = [] parameters -> result {                                                       \
    return callWatched(#name, [&] { return watchedLibrary->functions->name arguments; }); \
  },
#include <velq/operations.def>
};

constexpr ObjectTable WatchedObjects = {
#define VELQ_OBJECT(result, name, parameters, arguments)                                \
  .name = [] parameters -> result {                                                     \
    return callWatched(#name, [&] { return watchedLibrary->objects->name arguments; }); \
  },
#include <velq/operations.def>
};

constexpr LibraryTable WatchedTables = {.functions = &WatchedFunctions, .objects = &WatchedObjects};

void startWatching() {
  surroundingsBefore.emplace();
  // The unwinder of this program sets itself up with the first exception that it raises. Otherwise it could not catch
  // what a library throws that has a C++ runtime of its own.
  try {
    throw 0;
  } catch (int) {
  }
}

}  // namespace

Library::Library(const std::string& path, Report& shared) : path_(std::filesystem::absolute(path)) {
  watchedReport = &shared;
}

void Library::load() {
  startWatching();
  // Global, so that a preloaded probe finds the library behind itself.
  void* const handle = callWatched("dlopen()", [&] { return dlopen(path_.c_str(), RTLD_NOW | RTLD_GLOBAL); });
  if (handle == nullptr) throw std::runtime_error(dlerror());
  if (dlsym(handle, Entry) == nullptr) throw std::runtime_error(path_ + ": does not export " + Entry);
  void* const first = dlsym(RTLD_DEFAULT, Entry);
  Dl_info place{};
  if (dladdr(first, &place) != 0 && place.dli_fname != path_) watchedReport->layer.set(place.dli_fname);
  watchedLibrary = callWatched(Entry, reinterpret_cast<decltype(&CvxQuellisLibInitialize)>(first));
}

const LibraryTable* Library::tables() const { return watchedLibrary; }

}  // namespace compliance

// In a tool the loader binds this to the library that the tool is linked to.
const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() { return &compliance::WatchedTables; }
