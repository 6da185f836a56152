#include "simulator/simulation.h"

#include <algorithm>
#include <iterator>

#include "simulator/environment.h"

namespace simulator {

using namespace Automation::Velq;

Simulation& Simulation::instance() {
  static Simulation simulation(rigPathFromEnvironment(), statePlaceFromEnvironment());
  return simulation;
}

Simulation::Simulation(const std::string& rigPath, const StatePlace& statePlace) : file_(statePlace), state_(file_) {
  try {
    rig_ = rigPath.empty() ? readBuiltInRig() : readRigFile(rigPath);
    hasRig_ = true;
  } catch (const RigError& error) {
    report(rigPath + ": " + error.what());
  }
  deriveGroups();
  refresh();
}

void Simulation::refresh() {
  if (!hasRig_) return;
  try {
    if (state_.refresh(contents_)) derive();
  } catch (const StateError& error) {
    reportState(error.what());
  }
}

std::vector<int32_t> Simulation::numbers() const {
  std::vector<int32_t> numbers;
  numbers.reserve(rig_.devices.size() + groups_.size());
  for (const Device& device : rig_.devices) {
    if (!device.children) numbers.push_back(device.number);
  }
  const auto boards = static_cast<std::ptrdiff_t>(numbers.size());
  for (const auto& [number, children] : groups_) numbers.push_back(number);
  std::inplace_merge(numbers.begin(), numbers.begin() + boards, numbers.end());
  return numbers;
}

bool Simulation::exists(int32_t number) const {
  if (isFusion(number)) return true;
  const Device* const device = rig_.find(number);
  return device != nullptr && !device->children;
}

int32_t Simulation::findDescription(const std::string& description) {
  if (!byDescription_) {
    byDescription_.emplace();
    for (const int32_t number : numbers()) byDescription_->emplace(this->description(number), number);
  }
  const auto found = byDescription_->lower_bound({description, INT32_MIN});
  return found != byDescription_->end() && found->first == description ? found->second : -1;
}

bool Simulation::isBorneByAnother(const std::string& description, int32_t number) {
  const int32_t first = findDescription(description);
  if (first != number) return first != -1;
  const auto next = byDescription_->upper_bound({description, number});
  return next != byDescription_->end() && next->first == description;
}

void Simulation::undoAll(int32_t number, std::vector<StateChange>& changes) const {
  auto changed = contents_.lower_bound(std::pair(number, std::string_view()));
  for (; changed != contents_.end() && changed->first.first == number; ++changed)
    changes.push_back({number, changed->first.second, std::monostate()});
}

std::string_view Simulation::description(int32_t number) const {
  const StateValue* const value = changed(number, "description");
  if (value != nullptr) return std::get<std::string>(*value);
  const Device* const device = rig_.find(number);
  return device == nullptr ? std::string_view() : device->description;
}

int32_t Simulation::boardId(int32_t number) const {
  const Device* const device = rig_.find(number);
  return static_cast<int32_t>(changedNumber(number, "board id", device == nullptr ? 0 : device->boardId));
}

int32_t Simulation::productId(int32_t number) const {
  const auto group = groups_.find(number);
  const Device* const device = rig_.find(group == groups_.end() ? number : group->second.front());
  return device == nullptr ? 0 : device->productId;
}

uint16_t Simulation::firmwareVersion(int32_t number, size_t chip) const {
  const uint16_t original = (*rig_.find(number)->firmware)[chip].version;
  return static_cast<uint16_t>(changedNumber(number, firmwareItem(chip), original));
}

uint32_t Simulation::codeInUse(int32_t number, const std::string& item, uint32_t rigCode) const {
  return static_cast<uint32_t>(changedNumber(number, item, rigCode));
}

std::vector<int32_t> Simulation::children(int32_t number) const {
  const auto group = groups_.find(number);
  return group == groups_.end() ? std::vector<int32_t>() : group->second;
}

int32_t Simulation::groupOf(int32_t number) const {
  const auto group = groupOf_.find(number);
  return group == groupOf_.end() ? -1 : group->second;
}

ErrorCode Simulation::change(const std::function<ErrorCode(std::vector<StateChange>&)>& decide) {
  ErrorCode status = Success;
  std::vector<StateChange> changes;
  try {
    state_.change(contents_, [&](bool refreshed) {
      if (refreshed) derive();
      if (!mismatch_.empty()) throw StateError(mismatch_);
      status = decide(changes);
      if (status != Success) changes.clear();
      unindex(changes);
      return changes;
    });
  } catch (const StateError& error) {
    byDescription_.reset();
    return reportState(error.what());
  }
  followUp(changes);
  return status;
}

ErrorCode Simulation::hold(int32_t number) {
  const ErrorCode status = change([](std::vector<StateChange>&) { return Success; });
  return status != Success ? status : guard([&] { return file_.hold(number) ? Success : ErrorDeviceBusy; });
}

void Simulation::release(int32_t number) { file_.release(number); }

ErrorCode Simulation::checkFree(int32_t number) {
  return guard([&] { return file_.isHeldElsewhere(number) ? ErrorDeviceBusy : Success; });
}

const StateValue* Simulation::changed(int32_t number, std::string_view item) const {
  const auto found = contents_.find(std::pair(number, item));
  return found == contents_.end() ? nullptr : &found->second;
}

int64_t Simulation::changedNumber(int32_t number, std::string_view item, int64_t otherwise) const {
  const StateValue* const value = changed(number, item);
  return value == nullptr ? otherwise : std::get<int64_t>(*value);
}

bool Simulation::belongs(int32_t number, const std::string& item, const StateValue& value) const {
  if (item == "description") return exists(number) && std::holds_alternative<std::string>(value);
  const Device* const device = rig_.find(number);
  if (!std::holds_alternative<int64_t>(value)) return false;
  if (item == "board id") return exists(number);
  if (device == nullptr) return false;
  if (item == "fusion") return !device->children && isGroupNumber(std::get<int64_t>(value));
  for (size_t chip = 0; device->firmware && chip < device->firmware->size(); ++chip) {
    if (item == firmwareItem(chip)) return true;
  }
  for (size_t i = 0; device->calibration && i < device->calibration->size(); ++i) {
    const std::vector<Section>& sections = (*device->calibration)[i].sections;
    for (size_t k = 0; k < sections.size(); ++k) {
      for (size_t j = 0; j < sections[k].items.size(); ++j) {
        if (item == calibrationItem(i, k, j)) return true;
      }
    }
  }
  return false;
}

bool Simulation::isGroupNumber(int64_t number) const {
  if (number < -1 || number > INT32_MAX) return false;
  const Device* const device = rig_.find(static_cast<int32_t>(number));
  return device == nullptr || device->children;
}

void Simulation::derive() {
  byDescription_.reset();
  deriveGroups();
  mismatch_ = findMismatch();
  if (mismatch_.empty()) return;
  reportState(mismatch_);
  contents_.clear();
  deriveGroups();
}

std::string Simulation::findMismatch() const {
  for (const auto& [key, value] : contents_) {
    const auto& [number, item] = key;
    if (belongs(number, item, value)) continue;
    return "was written for another rig (device " + std::to_string(number) + " has no \"" + item +
           "\" here) and is not used; name another file with VELQ_STATE, or delete this one";
  }
  return "";
}

void Simulation::deriveGroups() {
  groupOf_.clear();
  groups_.clear();
  for (const Device& device : rig_.devices) {
    if (!device.children) continue;
    for (const int32_t child : *device.children) groupOf_[child] = device.number;
  }
  for (const auto& [key, value] : contents_) {
    const auto& [number, item] = key;
    if (item == "fusion" && belongs(number, item, value))
      groupOf_[number] = static_cast<int32_t>(std::get<int64_t>(value));
  }
  std::erase_if(groupOf_, [](const auto& entry) { return entry.second < 0; });
  for (const auto& [child, group] : groupOf_) groups_[group].push_back(child);
}

// The index refers to the texts themselves, so it lets go of those that are about to change.
void Simulation::unindex(const std::vector<StateChange>& changes) {
  for (const StateChange& change : changes) {
    if (byDescription_ && change.item == "description")
      byDescription_->erase({description(change.device), change.device});
  }
}

void Simulation::followUp(const std::vector<StateChange>& changes) {
  for (const StateChange& change : changes) {
    if (change.item == "fusion") {
      byDescription_.reset();
      return deriveGroups();
    }
    if (byDescription_ && change.item == "description")
      byDescription_->emplace(description(change.device), change.device);
  }
}

ErrorCode Simulation::reportState(const std::string& problem) const {
  report((file_.path().empty() ? "the state" : file_.path()) + ": " + problem);
  return ErrorNotKept;
}

ErrorCode Simulation::guard(const std::function<ErrorCode()>& action) const {
  try {
    return action();
  } catch (const StateError& error) {
    return reportState(error.what());
  }
}

std::string firmwareItem(size_t chip) { return "firmware " + std::to_string(chip); }

std::string calibrationItem(size_t solution, size_t section, size_t item) {
  return "calibration " + std::to_string(solution) + "." + std::to_string(section) + "." + std::to_string(item);
}

}  // namespace simulator
