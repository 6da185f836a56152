// The simulator's operations, under the names of the boundary's; <velq/operations.def> describes them.
#pragma once

#include <velq/library.h>

namespace simulator {

using namespace Automation::Velq;

#define VELQ_FUNCTION(result, name, parameters, arguments) result name parameters;
#define VELQ_OBJECT(result, name, parameters, arguments) result name parameters;
#include <velq/operations.def>

}  // namespace simulator
