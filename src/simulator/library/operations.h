// The simulator's operations, under the names of the boundary's; <velq/operations.def> describes them.
#pragma once

#include <velq/library.h>

#include <type_traits>

namespace simulator {

#define VELQ_FUNCTION(result, name, parameters, arguments) \
  std::remove_pointer_t<decltype(Automation::Velq::FunctionTable::name)> name;
#define VELQ_OBJECT(result, name, parameters, arguments) \
  std::remove_pointer_t<decltype(Automation::Velq::ObjectTable::name)> name;
#include <velq/operations.def>

}  // namespace simulator
