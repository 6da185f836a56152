// For libraries that support some of the operations: one result for all others.
#pragma once

#include <velq/library.h>

namespace Automation::Velq {

/// Points `field`, when it is null, at a function that returns Answer::give<Result>() for any arguments.
template <typename Answer, typename Result, typename... Parameters>
constexpr void fillMissingField(Result (*&field)(Parameters...)) {
  if (field == nullptr) field = [](Parameters...) -> Result { return Answer::template give<Result>(); };
}

/// Does so for every field of the table.
template <typename Answer>
constexpr void fillMissing(FunctionTable& table) {
#define VELQ_FUNCTION(result, name, parameters, arguments) fillMissingField<Answer>(table.name);
#include <velq/operations.def>
}

/// Does so for every field of the table.
template <typename Answer>
constexpr void fillMissing(ObjectTable& table) {
#define VELQ_OBJECT(result, name, parameters, arguments) fillMissingField<Answer>(table.name);
#include <velq/operations.def>
}

}  // namespace Automation::Velq
