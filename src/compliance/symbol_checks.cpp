// The file's one symbol and the tables behind it.
#include <stdexcept>

#include "compliance/check.h"
#include "compliance/exported_symbols.h"

namespace compliance {

namespace {

using namespace Automation::Velq;

void checkExports(const Bench& bench, Findings& findings) {
  const std::string& path = bench.library.path();
  try {
    for (const std::string& name : exportedSymbols(path))
      findings.expect(name == "CvxQuellisLibInitialize", "exports \"" + name + "\"", path);
  } catch (const std::runtime_error& error) {
    findings.expect(false, error.what(), "dynamic symbol table");
  }
}

void checkTables(const Bench& bench, Findings& findings) {
  const LibraryTable* const tables = bench.library.tables();
  if (!findings.expect(tables != nullptr, "null", "result of CvxQuellisLibInitialize")) return;
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

constexpr Check FileList[] = {{"one-export", checkExports}};
constexpr Check TableList[] = {{"complete-tables", checkTables}};

}  // namespace

const Checks SymbolChecks = FileList;
const Checks TableChecks = TableList;

}  // namespace compliance
