#include "compliance/devices/restoration.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

constexpr const char* Altered = "altered";
constexpr const char* Left = "left";

// The wide string that a snapshot shows in quotes.
std::wstring unescaped(const std::string& shown) {
  std::wstring text;
  for (size_t i = 1; i + 1 < shown.size(); ++i) {
    if (shown[i] != '\\') {
      text += static_cast<wchar_t>(shown[i]);
    } else if (shown[++i] != 'x') {
      text += static_cast<wchar_t>(shown[i]);
    } else {
      text += static_cast<wchar_t>(std::strtoul(&shown[i + 2], nullptr, 16));
      i = shown.find('}', i);
    }
  }
  return text;
}

std::vector<int32_t> childrenIn(const Snapshot& snapshot, int32_t number) {
  const auto found = snapshot.find(childrenFact(number));
  std::string shown = found == snapshot.end() ? "" : found->second;
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c == '[' || c == ',' || c == ']'; }, ' ');
  std::istringstream numbers(shown);
  return {std::istream_iterator<int32_t>(numbers), {}};
}

std::vector<int32_t> without(std::vector<int32_t> numbers, const std::vector<int32_t>& others) {
  std::erase_if(numbers, [&](int32_t n) { return std::count(others.begin(), others.end(), n) > 0; });
  return numbers;
}

int32_t countOf(const std::vector<int32_t>& numbers) { return static_cast<int32_t>(numbers.size()); }

// Before the names: a new fusion device has to have its number before it is renamed.
void restoreGroups(const Snapshot& before, const Snapshot& now) {
  for (const int32_t number : numbersIn(now)) {
    const std::vector<int32_t> added = without(childrenIn(now, number), childrenIn(before, number));
    if (!added.empty()) CvxFusionDeviceRemoveChildren(number, countOf(added), added.data());
  }
  for (int32_t number : numbersIn(before)) {
    const std::vector<int32_t> removed = without(childrenIn(before, number), childrenIn(now, number));
    if (removed.empty()) continue;
    if (CvxIsFusionDevice(number) == Success)
      CvxFusionDeviceAddChildren(number, countOf(removed), removed.data());
    else
      CvxFusionDeviceCreate(countOf(removed), removed.data(), &number);
  }
}

void restoreDevice(const Snapshot& before, int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  if (device == nullptr) return;
  const std::wstring description = unescaped(before.at(descriptionFact(number)));
  const int32_t id = std::stoi(before.at(boardIdFact(number)));
  for (const size_t terminator : {1, 0})
    if (descriptionOf(device.get()) != description)
      DeviceCtrl_setDescription(device.get(), static_cast<int32_t>(description.size() + terminator),
                                description.c_str());
  if (DeviceCtrl_getBoardId(device.get()) != id) DeviceCtrl_setBoardId(device.get(), id);
}

}  // namespace

bool isRestorable(const std::string& fact) {
  return fact == OrderFact || fact.ends_with(": description") || fact.ends_with(": board id") ||
         fact.ends_with(": children");
}

void restoreDevices(const Snapshot& before, const std::function<void(const std::string&)>& report) {
  const Snapshot now = takeSnapshot();
  const auto reportAll = [&](const char* kind, const Snapshot& found) {
    for (const auto& [fact, wanted, value] : differences(before, found))
      if (isRestorable(fact)) report(kind + ('\t' + fact) + '\t' + wanted + '\t' + value);
  };
  reportAll(Altered, now);
  restoreGroups(before, now);
  for (const int32_t number : numbersIn(before)) restoreDevice(before, number);
  reportAll(Left, takeSnapshot());
  report("");
}

std::optional<Alteration> alterationIn(const std::string& line) {
  std::istringstream parts(line);
  std::string kind;
  Alteration alteration;
  auto& [fact, wanted, found] = alteration.difference;
  for (std::string* const part : {&kind, &fact, &wanted, &found})
    if (!std::getline(parts, *part, '\t')) return std::nullopt;
  alteration.isLeft = kind == Left;
  return alteration;
}

}  // namespace compliance
