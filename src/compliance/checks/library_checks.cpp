// The file, its one symbol, and the tables behind it.
#include <stdexcept>
#include <string>
#include <vector>

#include "base/demangled.h"
#include "compliance/checks/check.h"
#include "compliance/library/exported_symbols.h"

namespace compliance {

namespace {

using namespace Automation::Velq;

constexpr const char* Entry = "CvxQuellisLibInitialize";

}  // namespace

void checkLoading(const CheckContext& context, Findings& findings) {
  try {
    context.library.load();
  } catch (const std::runtime_error& error) {
    findings.expect(false, error.what(), "in the words of the loader");
  }
}

void checkExports(const CheckContext& context, Findings& findings) {
  try {
    for (const std::string& name : exportedSymbols(context.library.path()))
      findings.expect(name == Entry, "exports " + base::demangled(name.c_str()), "which a version script keeps inside");
  } catch (const std::runtime_error& error) {
    findings.expect(false, error.what(), "so nothing finds the entry in it");
  }
}

void checkTables(const CheckContext& context, Findings& findings) {
  const LibraryTable* const tables = context.library.tables();
  if (!findings.expect(tables != nullptr, "null", std::string("result of ") + Entry)) return;
  if (findings.expect(tables->functions != nullptr, "null", "LibraryTable::functions")) {
#define VELQ_FUNCTION(result, name, parameters, arguments) \
  findings.expect(tables->functions->name != nullptr, "null", "FunctionTable::" #name);
#include <velq/operations.def>
  }
  if (findings.expect(tables->objects != nullptr, "null", "LibraryTable::objects")) {
#define VELQ_OBJECT(result, name, parameters, arguments) \
  findings.expect(tables->objects->name != nullptr, "null", "ObjectTable::" #name);
#include <velq/operations.def>
  }
}

}  // namespace compliance
