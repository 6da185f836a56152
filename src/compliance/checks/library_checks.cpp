// The file, its one symbol, and the tables behind it.
#include "base/demangled.h"
#include "compliance/checks/check.h"
#include "compliance/library/exported_symbols.h"

namespace compliance {

void checkLoading(const CheckContext& context) { context.library.load(); }

void checkExports(const CheckContext& context) {
  for (const std::string& name : exportedSymbols(context.library.path()))
    context.findings.at("which a version script keeps inside")
        .expect(name == Library::Entry, "exports " + base::demangled(name.c_str()));
}

void checkTables(const CheckContext& context) {
  const auto isThere = [&](auto* part, const std::string& name) {
    return context.findings.at(name).expect(part != nullptr, "null");
  };
  const LibraryTable* const tables = context.library.tables();
  if (!isThere(tables, std::string("result of ") + Library::Entry)) return;
  if (isThere(tables->functions, "LibraryTable::functions")) {
#define VELQ_FUNCTION(result, name, parameters, arguments) isThere(tables->functions->name, "FunctionTable::" #name);
#include <velq/operations.def>
  }
  if (isThere(tables->objects, "LibraryTable::objects")) {
#define VELQ_OBJECT(result, name, parameters, arguments) isThere(tables->objects->name, "ObjectTable::" #name);
#include <velq/operations.def>
  }
}

}  // namespace compliance
