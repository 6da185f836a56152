#include "probe/faults.h"

#include <charconv>
#include <optional>
#include <system_error>

#include "probe/problem.h"
#include "text/one_line.h"

namespace probe {

namespace {

std::string_view trim(std::string_view text) {
  const size_t begin = text.find_first_not_of(" \t\n");
  return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(" \t\n") - begin + 1);
}

[[noreturn]] void refuse(std::string_view entry, const std::string& expected) {
  stop("VELQ_FAULTS: \"" + std::string(entry) + "\": expected " + expected);
}

// A whole number in decimal, or in hexadecimal behind "0x", all of `text`.
std::optional<int64_t> parseNumber(std::string_view text) {
  // from_chars takes no prefix, but a sign: "0x-1" would be -1.
  const bool isHexadecimal = text.starts_with("0x") && !text.starts_with("0x-");
  if (isHexadecimal) text.remove_prefix(2);
  int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, isHexadecimal ? 16 : 10);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

Operation parseOperation(std::string_view entry, std::string_view name) {
  for (size_t i = 0; i < OperationCount; ++i) {
    if (factsOf(Operation{i}).name == name) return Operation{i};
  }
  refuse(entry, "the name of an operation before '#' or '='");
}

void parseRange(std::string_view entry, std::string_view range, Fault& fault) {
  const size_t dash = range.find('-');
  const std::optional<int64_t> first = parseNumber(range.substr(0, dash));
  const std::optional<int64_t> last = dash == std::string_view::npos ? first : parseNumber(range.substr(dash + 1));
  if (!first || !last || *first < 1 || *last < *first) refuse(entry, "#FIRST or #FIRST-LAST, counted from 1");
  fault.first = static_cast<uint64_t>(*first);
  fault.last = static_cast<uint64_t>(*last);
}

uint32_t parseAnswer(std::string_view entry, std::string_view answer, AnswerKind kind) {
  if (kind == AnswerKind::Nothing) refuse(entry, "an operation that returns a value");
  if (kind == AnswerKind::Pointer) {
    if (answer != "null") refuse(entry, "the answer null");
    return 0;
  }
  const std::optional<int64_t> number = parseNumber(answer);
  if (!number || *number < INT32_MIN || *number > UINT32_MAX) refuse(entry, "a 32-bit number as the answer");
  // Negative numbers keep their bits, and the hook turns them back into the operation's type.
  return static_cast<uint32_t>(*number);
}

Fault parseFault(std::string_view entry) {
  const size_t equals = entry.find('=');
  if (equals == std::string_view::npos) refuse(entry, "OPERATION[#FIRST[-LAST]]=ANSWER");
  const std::string_view call = trim(entry.substr(0, equals));
  const size_t hash = call.find('#');
  Fault fault{.text = std::string(entry), .operation = parseOperation(entry, call.substr(0, hash))};
  if (hash != std::string_view::npos) parseRange(entry, call.substr(hash + 1), fault);
  fault.answer = parseAnswer(entry, trim(entry.substr(equals + 1)), factsOf(fault.operation).answer);
  return fault;
}

}  // namespace

Faults::Faults(std::string_view list) {
  while (!list.empty()) {
    const size_t end = list.find(';');
    const std::string_view entry = trim(list.substr(0, end));
    list = end == std::string_view::npos ? "" : list.substr(end + 1);
    // A semicolon behind the last entry is accepted.
    if (!entry.empty() || !trim(list).empty()) faults_.push_back(parseFault(entry));
  }
  prepareReport();
}

const Fault* Faults::next(Operation operation) {
  const uint64_t call = ++calls_[static_cast<size_t>(operation)];
  for (Fault& fault : faults_) {
    if (fault.operation != operation || call < fault.first || call > fault.last) continue;
    if (!fault.reached) {
      fault.reached = true;
      prepareReport();
    }
    return &fault;
  }
  return nullptr;
}

void Faults::prepareReport() {
  size_t count = 0;
  std::string texts;
  for (const Fault& fault : faults_) {
    if (fault.reached) continue;
    ++count;
    texts += "; " + text::oneLine(fault.text);
  }
  reports_.push_back({"# faults never reached: " + std::to_string(count) + texts + "\n", count == 0});
  report_ = &reports_.back();
}

}  // namespace probe
