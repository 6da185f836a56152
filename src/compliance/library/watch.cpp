#include "compliance/library/watch.h"

#include <cxxabi.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <typeinfo>

#include "base/demangled.h"
#include "compliance/library/surroundings.h"

namespace compliance {

namespace {

using namespace Automation::Velq;

// The watched functions have no room for arguments of ours.
const LibraryTable* watchedLibrary = nullptr;
Report* watchedReport = nullptr;

const Surroundings& surroundings() {
  static const Surroundings atStart;
  return atStart;
}

// What has become of the process that the tool would notice; empty when all is well.
std::string disturbance() {
  // What the library has printed may still be in the buffer.
  std::fflush(stdout);
  int unread = 0;
  if (ioctl(STDOUT_FILENO, FIONREAD, &unread) == 0 && unread > 0)
    return "writes to standard output, which is the tool's";
  return surroundings().disturbance();
}

// Whether an operation, when it is done, has changed something that others may want to lock.
bool isChange(std::string_view operation) {
  return operation.starts_with("DeviceCtrl_set") || operation == "FirmwareItem_loadFile" ||
         (operation.starts_with("CvxFusionDevice") && !operation.ends_with("GetChildren"));
}

FunctionTable watchedFunctions() {
  FunctionTable table{};
#define VELQ_FUNCTION(result, name, parameters, arguments)                                \
  table.name = [] parameters -> result {                                                  \
    return callWatched(#name, [&] { return watchedLibrary->functions->name arguments; }); \
  };
#include <velq/operations.def>
  return table;
}

ObjectTable watchedObjects() {
  ObjectTable table{};
#define VELQ_OBJECT(result, name, parameters, arguments)                                \
  table.name = [] parameters -> result {                                                \
    return callWatched(#name, [&] { return watchedLibrary->objects->name arguments; }); \
  };
#include <velq/operations.def>
  return table;
}

}  // namespace

void startWatching(Report& report) {
  watchedReport = &report;
  surroundings();
  // The unwinder of this program sets itself up with the first exception that it raises, and would abort without.
  try {
    throw 0;
  } catch (int) {
  }
}

Call::Call(const char* name) : name_(name) {
  watchedReport->operation.set(name);
  watchedReport->isCalling = true;
}

Call::~Call() {
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

void endWithException() {
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

void watch(const LibraryTable* tables) { watchedLibrary = tables; }

const LibraryTable* watchedTables() {
  // Static, for the tool's side of the boundary asks for the tables once and calls them until the process ends.
  static const FunctionTable functions = watchedFunctions();
  static const ObjectTable objects = watchedObjects();
  static const LibraryTable watched{.functions = &functions, .objects = &objects};
  return &watched;
}

}  // namespace compliance
