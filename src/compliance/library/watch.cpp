#include "compliance/library/watch.h"

#include <cxxabi.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <typeinfo>

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

std::string nameOf(const std::type_info* type) {
  if (type == nullptr) return "what is no C++ exception";
  const std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(type->name(), nullptr, nullptr, nullptr),
                                                         std::free);
  return name == nullptr ? type->name() : name.get();
}

// What has become of the process that the tool would notice; empty when all is well.
std::string disturbance() {
  std::fflush(stdout);
  struct stat output {};
  if (fstat(STDOUT_FILENO, &output) != 0) return "closes standard output";
  if (output.st_size != 0) return "writes to standard output, which is the tool's";
  return surroundings().disturbance();
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
  if (report_.disturbance.isEmpty())
    if (const std::string what = disturbance(); !what.empty()) report_.disturbance.set(what + ", during " + name_);
  report_.operation.set("");
}

void endWithException(Report& report) {
  const std::string type = nameOf(abi::__cxa_current_exception_type());
  try {
    throw;
  } catch (const std::exception& exception) {
    report.thrown.set(type + ": " + exception.what());
  } catch (...) {
    report.thrown.set(type);
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

const LibraryTable* watch(const LibraryTable* tables, Report& report) {
  library = tables;
  reported = &report;
  static const FunctionTable functions = watchedFunctions();
  static const ObjectTable objects = watchedObjects();
  static const LibraryTable watched{.functions = &functions, .objects = &objects};
  return &watched;
}

}  // namespace compliance
