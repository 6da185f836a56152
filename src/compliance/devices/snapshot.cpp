#include "compliance/devices/snapshot.h"

#include <iterator>
#include <sstream>

#include "compliance/devices/items.h"

namespace compliance {

namespace {

std::string prefixOf(int32_t number) { return "device " + std::to_string(number) + ": "; }

std::string answerOf(ErrorCode (*getter)(DeviceCtrl*, int32_t, wchar_t*), DeviceCtrl* device) {
  std::wstring text(LargeCapacity, L'\0');
  const ErrorCode status = getter(device, LargeCapacity, text.data());
  return failed(status) ? show(status) : show(text.c_str());
}

template <typename Value>
std::string answerOf(Array* array) {
  if (array == nullptr) return "null";
  std::string text;
  for (const Value value : valuesOf<Value>(array)) text += std::to_string(value) + " ";
  return text;
}

std::string valueOr(const Snapshot& snapshot, const std::string& fact, const char* otherwise) {
  const auto found = snapshot.find(fact);
  return found == snapshot.end() ? otherwise : found->second;
}

}  // namespace

// Without the prefix of the device: the list is not part of what a device returns of itself.
std::string listedFact(int32_t number) { return "description of device " + std::to_string(number) + " in the list"; }
std::string descriptionFact(int32_t number) { return prefixOf(number) + "description"; }
std::string boardIdFact(int32_t number) { return prefixOf(number) + "board id"; }
std::string childrenFact(int32_t number) { return prefixOf(number) + "children"; }

Snapshot itemFactsOf(Scenario scenario, DaqCtrlBase* control, int32_t number) {
  Snapshot facts;
  const std::string prefix = prefixOf(number);
  const auto addString = [&](const auto& get, const char* what, const std::string& place) {
    facts[prefix + place + ", " + what] = show(get());
  };
  visitItems(scenario, control, {.array = [](auto*, auto&, auto&) { return true; }, .string = addString});
  return facts;
}

Snapshot factsOf(DeviceCtrl* device) {
  const int32_t number = DeviceCtrl_getDeviceNumber(device);
  const std::string prefix = prefixOf(number);
  Snapshot facts{{boardIdFact(number), std::to_string(DeviceCtrl_getBoardId(device))},
                 {prefix + "product id", std::to_string(DeviceCtrl_getProductId(device))},
                 {descriptionFact(number), answerOf(DeviceCtrl_getDescription, device)},
                 {prefix + "board version", answerOf(DeviceCtrl_getBoardVersion, device)},
                 {prefix + "driver version", answerOf(DeviceCtrl_getDriverVersion, device)},
                 {prefix + "library version", answerOf(DeviceCtrl_getDllVersion, device)},
                 {prefix + "location", answerOf(DeviceCtrl_getLocation, device)},
                 {prefix + "base addresses", answerOf<uint64_t>(DeviceCtrl_getBaseAddresses(device))},
                 {prefix + "interrupts", answerOf<int32_t>(DeviceCtrl_getInterrupts(device))},
                 {prefix + "fusion status", show(CvxIsFusionDevice(number))},
                 {childrenFact(number), show(sortedChildrenOf(number))}};
  for (const Scenario scenario : Scenarios)
    if (const OpenControl control = openControl(scenario, number))
      facts.merge(itemFactsOf(scenario, control.get(), number));
  return facts;
}

Snapshot takeSnapshot() {
  Snapshot snapshot;
  std::vector<int32_t> order;
  for (const std::wstring& description : listedDescriptions()) {
    const OpenDevice device = openDevice(description);
    if (device == nullptr) {
      snapshot[placeOf(description)] = "cannot be opened";
      continue;
    }
    const int32_t number = DeviceCtrl_getDeviceNumber(device.get());
    order.push_back(number);
    snapshot[listedFact(number)] = show(description);
    snapshot.merge(factsOf(device.get()));
  }
  snapshot[OrderFact] = show(order);
  return snapshot;
}

Snapshot factsAbout(int32_t number, Snapshot snapshot) {
  std::erase_if(snapshot, [prefix = prefixOf(number)](const auto& fact) { return !fact.first.starts_with(prefix); });
  return snapshot;
}

Snapshot without(int32_t number, Snapshot snapshot) {
  std::erase_if(snapshot, [prefix = prefixOf(number)](const auto& fact) { return fact.first.starts_with(prefix); });
  snapshot.erase(listedFact(number));
  snapshot.erase(OrderFact);
  return snapshot;
}

std::map<std::string, Difference> differences(const Snapshot& wanted, const Snapshot& found) {
  Snapshot all = wanted;
  all.insert(found.begin(), found.end());
  std::map<std::string, Difference> different;
  for (const auto& [fact, value] : all) {
    const Difference values{valueOr(wanted, fact, "nothing"), valueOr(found, fact, "nothing")};
    if (values.wanted != values.found) different[fact] = values;
  }
  return different;
}

void expectSame(const Snapshot& wanted, const Snapshot& found, const Findings& here) {
  for (const auto& [fact, values] : differences(wanted, found))
    here.expect(false, fact + " is " + values.found + ", not " + values.wanted);
}

std::vector<int32_t> numbersIn(const Snapshot& snapshot, const std::string& fact) {
  std::string shown = valueOr(snapshot, fact, "");
  for (char& c : shown)
    if (c == '[' || c == ',' || c == ']') c = ' ';
  std::istringstream numbers(shown);
  return {std::istream_iterator<int32_t>(numbers), {}};
}

std::string textOf(const Snapshot& snapshot) {
  std::string text;
  for (const auto& [fact, value] : snapshot) text += fact + '\t' + value + '\n';
  return text;
}

Snapshot snapshotOf(const std::string& text) {
  Snapshot snapshot;
  std::istringstream lines(text);
  for (std::string fact, value; std::getline(lines, fact, '\t') && std::getline(lines, value);) snapshot[fact] = value;
  return snapshot;
}

}  // namespace compliance
