// The operations of both tables, numbered.
#pragma once

#include <velq/library.h>

#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace probe {

/// In the order of <velq/operations.def>.
enum class Operation : size_t {
#define VELQ_FUNCTION(result, name, parameters, arguments) name,
#define VELQ_OBJECT(result, name, parameters, arguments) name,
#include <velq/operations.def>
};

/// What an operation returns.
enum class AnswerKind { Nothing, Number, Pointer };

/// The kind of what the function behind a field of a table returns.
template <typename Table, typename Result, typename... Parameters>
constexpr AnswerKind kindOf(Result (*Table::*)(Parameters...)) {
  if (std::is_void_v<Result>) return AnswerKind::Nothing;
  return std::is_pointer_v<Result> ? AnswerKind::Pointer : AnswerKind::Number;
}

/// An operation apart from its arguments.
struct OperationFacts {
  std::string_view name;  ///< as a trace shows it
  AnswerKind answer;
};

/// All operations, in the same order.
inline constexpr OperationFacts Facts[] = {
#define VELQ_FUNCTION(result, name, parameters, arguments) {#name, kindOf(&Automation::Velq::FunctionTable::name)},
#define VELQ_OBJECT(result, name, parameters, arguments) {#name, kindOf(&Automation::Velq::ObjectTable::name)},
#include <velq/operations.def>
};

inline constexpr size_t OperationCount = std::size(Facts);

constexpr const OperationFacts& factsOf(Operation operation) { return Facts[static_cast<size_t>(operation)]; }

}  // namespace probe
