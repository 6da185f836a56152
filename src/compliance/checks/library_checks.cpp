// The file, its one symbol, and the tables behind it.
#include <stdexcept>

#include "base/demangled.h"
#include "compliance/checks/check.h"

namespace compliance {

void checkLoading(const CheckContext& context) {
  try {
    context.library.load();
  } catch (const std::runtime_error& error) {
    context.findings.at("in the words of the loader").expect(false, error.what());
  }
}

void checkExports(const CheckContext& context) {
  try {
    for (const std::string& name : exportedSymbols(context.library.path()))
      context.findings.at("which a version script keeps inside")
          .expect(name == Library::Entry, "exports " + base::demangled(name.c_str()));
  } catch (const std::runtime_error& error) {
    context.findings.at("so nothing finds the entry in it").expect(false, error.what());
  }
}

void checkTables(const CheckContext& context) {
  const auto isThere = [&](auto* part, const std::string& name) {
    return context.findings.at(name).expect(part != nullptr, "null");
  };
  const Automation::Velq::LibraryTable* const tables = context.library.tables();
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
