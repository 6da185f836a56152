#include <velq/library.h>

#include "simulator/library/operations.h"

namespace {

constexpr Automation::Velq::FunctionTable Functions = {
#define VELQ_FUNCTION(result, name, parameters, arguments) .name = simulator::name,
#include <velq/operations.def>
};

constexpr Automation::Velq::ObjectTable Objects = {
#define VELQ_OBJECT(result, name, parameters, arguments) .name = simulator::name,
#include <velq/operations.def>
};

constexpr Automation::Velq::LibraryTable Tables = {.functions = &Functions, .objects = &Objects};

}  // namespace

const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() { return &Tables; }
