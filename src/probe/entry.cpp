#include <dlfcn.h>
#include <unistd.h>
#include <velq/library.h>

#include <csignal>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "base/environment.h"
#include "probe/faults.h"
#include "probe/operation.h"
#include "probe/problem.h"
#include "probe/trace.h"
#include "probe/trace_file.h"

namespace probe {

using namespace Automation::Velq;

namespace {

using Entry = decltype(&CvxQuellisLibInitialize);

// The entry of the library behind the probe; null in a process without one.
Entry nextEntry() { return reinterpret_cast<Entry>(dlsym(RTLD_NEXT, "CvxQuellisLibInitialize")); }

struct Probe {
  Probe() {
    if (isOnDuty()) std::signal(SIGABRT, reportAtAbort);
  }
  ~Probe() {
    if (isOnDuty()) report();
  }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;

  // Whether this process has to report faults: not one without a device library, such as a shell that starts a tool.
  bool isOnDuty() const { return !faults.isEmpty() && nextEntry() != nullptr; }

  // Reports in the trace, or else on standard error, the faults that no call reached. Safe in a signal handler.
  void report() const {
    const Faults::Report& report = faults.report();
    if (trace.isOpen()) {
      writeWithoutSignal(trace.descriptor(), report.line);
    } else if (!report.allReached) {
      writeWithoutSignal(STDERR_FILENO, "velq-probe: ");
      writeWithoutSignal(STDERR_FILENO, report.line);
    }
  }

  static void reportAtAbort(int signal);

  const LibraryTable* next = nullptr;
  Faults faults{base::environment("VELQ_FAULTS")};
  TraceFile trace{base::environment("VELQ_TRACE")};
  HandleNames names;
};

// Created when the library is loaded, so that a bad list of faults stops a command that makes no call, too, and
// destroyed when the process ends, after the tool's last call.
Probe theProbe;

// The tool can end with abort(), which runs no destructors.
void Probe::reportAtAbort(int signal) {
  std::signal(signal, SIG_DFL);
  theProbe.report();
}

template <auto Field, Operation Which>
struct Hook;

template <typename Table>
const Table& nextTable() {
  if constexpr (std::is_same_v<Table, FunctionTable>) return *theProbe.next->functions;
  if constexpr (std::is_same_v<Table, ObjectTable>) return *theProbe.next->objects;
}

// The hook for one field of a table: returns what a fault says or forwards the call, then writes its line.
template <typename Table, typename Result, typename... Parameters, Result (*Table::*Field)(Parameters...),
          Operation Which>
struct Hook<Field, Which> {
  static constexpr std::string_view Name = factsOf(Which).name;

  static Result call(Parameters... parameters) {
    const Fault* const fault = theProbe.faults.next(Which);
    const std::tuple<Parameters...> arguments(parameters...);
    if constexpr (std::is_void_v<Result>) {
      // Without a fault, which no list can have for such an operation. Written before the call, which makes the handles
      // in `arguments` invalid.
      write(arguments, "");
      (theProbe.names.forget(parameters), ...);
      (nextTable<Table>().*Field)(parameters...);
    } else {
      const Result result = fault != nullptr ? injected(*fault) : (nextTable<Table>().*Field)(parameters...);
      // A created handle is a new one, even at the address of one that was not disposed of.
      if constexpr (Name.ends_with("_Create") && std::is_pointer_v<Result>) theProbe.names.forget(result);
      if constexpr (std::is_pointer_v<Result> && !std::is_same_v<Result, const wchar_t*>) adopt(result, parameters...);
      const std::string shown = theProbe.trace.isOpen() ? showResult(theProbe.names, result, arguments) : "";
      write(arguments, " = " + shown + (fault != nullptr ? " (injected)" : ""));
      return result;
    }
  }

 private:
  static Result injected(const Fault& fault) {
    if constexpr (std::is_pointer_v<Result>)
      return nullptr;
    else
      return static_cast<Result>(fault.answer);
  }

  // Handles that an object returned are invalid with it.
  static void adopt(const void*) {}
  template <typename Owner, typename... Others>
  static void adopt(const void* result, Owner owner, Others...) {
    if constexpr (std::is_pointer_v<Owner>) theProbe.names.adopt(result, owner);
  }

  static void write(const std::tuple<Parameters...>& arguments, const std::string& result) {
    Probe& probe = theProbe;
    if (!probe.trace.isOpen()) return;
    probe.trace.write(std::string(Name) + "(" + showArguments(probe.names, arguments) + ")" + result);
  }
};

constexpr FunctionTable Functions = {
#define VELQ_FUNCTION(result, name, parameters, arguments) .name = Hook<&FunctionTable::name, Operation::name>::call,
#include <velq/operations.def>
};

constexpr ObjectTable Objects = {
#define VELQ_OBJECT(result, name, parameters, arguments) .name = Hook<&ObjectTable::name, Operation::name>::call,
#include <velq/operations.def>
};

constexpr LibraryTable Tables = {.functions = &Functions, .objects = &Objects};

}  // namespace
}  // namespace probe

const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() {
  // Not when the probe is loaded: shells that start a tool have it, too, but no device library.
  const auto entry = probe::nextEntry();
  if (entry == nullptr) probe::stop("the probe found no device library");
  probe::theProbe.next = entry();
  return &probe::Tables;
}
