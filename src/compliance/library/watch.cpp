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
const LibraryTable* library = nullptr;
Report* reported = nullptr;

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
#define VELQ_FUNCTION(result, name, parameters, arguments)                                    \
  table.name = [] parameters -> result {                                                      \
    return callWatched(#name, *reported, [&] { return library->functions->name arguments; }); \
  };
#include <velq/operations.def>
  return table;
}

ObjectTable watchedObjects() {
  ObjectTable table{};
#define VELQ_OBJECT(result, name, parameters, arguments)                                    \
  table.name = [] parameters -> result {                                                    \
    return callWatched(#name, *reported, [&] { return library->objects->name arguments; }); \
  };
#include <velq/operations.def>
  return table;
}

}  // namespace

Call::~Call() {
  const int64_t duration = std::chrono::nanoseconds(Clock::now() - begin_).count();
  if (duration > report_.slowest) {
    report_.slowest = duration;
    report_.slowestOperation.set(name_);
  }
  if (report_.disturbance.isEmpty())
    if (const std::string what = disturbance(); !what.empty()) report_.disturbance.set(what + ", during " + name_);
  if (isChange(name_)) report_.change.set(name_);
  report_.isCalling = false;
  ++report_.calls;
}

void endWithException(Report& report) {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  const std::string name = type == nullptr ? "what is no C++ exception" : base::demangled(type->name());
  try {
    throw;
  } catch (const std::exception& exception) {
    report.thrown.set(name + ": " + exception.what());
  } catch (...) {
    report.thrown.set(name);
  }
  _exit(0);
}

void watchProcess() { surroundings(); }

void prepareToCatch() {
  try {
    throw 0;
  } catch (int) {
  }
}

void watch(const LibraryTable* tables, Report& report) {
  library = tables;
  reported = &report;
}

const LibraryTable* watchedTables() {
  // Static, for the tool's side of the boundary asks for the tables once and calls them until the process ends.
  static const FunctionTable functions = watchedFunctions();
  static const ObjectTable objects = watchedObjects();
  static const LibraryTable watched{.functions = &functions, .objects = &objects};
  return &watched;
}

}  // namespace compliance
