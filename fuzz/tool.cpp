// Runs the tool on any arguments and on a library that answers anything. An input is the number of arguments, those,
// each with a terminator, and the library's answers.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <vector>

extern std::span<const uint8_t> answers;
int qutilMain(int argc, char** argv);

// The tool's sleeps take no time.
extern "C" unsigned sleep(unsigned) { return 0; }

namespace {

// The tool ends with abort() for texts over 256 bytes, a description of 63 bytes filled into an option included.
constexpr size_t LongestArgument = 256;
constexpr size_t LongestOption = 256 - 63;

// Repetitions multiply the time that a pattern takes, counted ones most of all.
constexpr size_t LongestPattern = 64;
constexpr int MostRepetitions = 2;

size_t longest(size_t position, const std::string& argument) {
  if (position == 2) return LongestOption;
  if (position != 1 || argument.find("/dd:") == std::string::npos) return LongestArgument;
  size_t end = argument.find_first_of("*+?");
  for (int i = 0; i < MostRepetitions && end < argument.size(); ++i) end = argument.find_first_of("*+?", end + 1);
  return std::min({end, argument.find('{'), LongestPattern});
}

std::vector<std::string> takeArguments(std::span<const uint8_t>& input) {
  std::vector<std::string> arguments = {"qutil"};
  const size_t count = input.empty() ? 0 : input.front() % 7;
  input = input.subspan(std::min<size_t>(1, input.size()));
  while (arguments.size() <= count) {
    const auto end = std::find(input.begin(), input.end(), 0);
    std::string argument(input.begin(), end);
    input = input.subspan(std::min(argument.size() + 1, input.size()));
    argument.resize(std::min(argument.size(), longest(arguments.size(), argument)));
    arguments.push_back(argument);
  }
  return arguments;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  return std::freopen("/dev/null", "w", stdout) == nullptr || std::freopen("/dev/null", "r", stdin) == nullptr;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  answers = {data, size};
  std::vector<std::string> arguments = takeArguments(answers);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  try {
    qutilMain(static_cast<int>(arguments.size()), pointers.data());
  } catch (const std::exception&) {
    // A way for the tool to end: a pattern that is no expression, a colon too far to the right, a null name.
  }
  return 0;
}
