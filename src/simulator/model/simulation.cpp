#include "simulator/model/simulation.h"

#include <algorithm>
#include <cassert>

#include "simulator/model/state_check.h"
#include "simulator/state/environment.h"
#include "text/utf8.h"

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
  groups_ = Groups(rig_, contents_);
  refresh();
}

bool Simulation::refresh() {
  if (!hasRig_) return false;
  const ErrorCode status = guard([&] {
    if (state_.refresh(contents_)) rebuildDerived();
    return Success;
  });
  return status == Success && mismatch_.empty();
}

std::vector<int32_t> Simulation::numbers() const {
  std::vector<int32_t> numbers;
  numbers.reserve(rig_.devices.size() + groups_.all().size());
  for (const Device& device : rig_.devices) {
    // A fusion device of the rig that was dissolved is no longer listed.
    if (!device.children || isFusion(device.number)) numbers.push_back(device.number);
  }
  for (const auto& [number, children] : groups_.all()) {
    if (rig_.find(number) == nullptr) numbers.push_back(number);
  }
  return numbers;
}

std::optional<int32_t> Simulation::select(int32_t number, const wchar_t* wanted) {
  refresh();
  if (number == -1 && wanted != nullptr && *wanted != 0) {
    const std::optional<std::string> utf8 = text::toUtf8(wanted);
    return utf8 ? findDescription(*utf8) : std::nullopt;
  }
  return exists(number) ? std::optional(number) : std::nullopt;
}

void Simulation::revertAll(int32_t number, std::vector<StateChange>& changes) const {
  auto changed = contents_.lower_bound({number, Item{}});
  for (; changed != contents_.end() && changed->first.first == number; ++changed)
    changes.push_back({number, changed->first.second, std::monostate()});
}

const std::string& Simulation::description(int32_t number) const {
  static const std::string none;
  if (const StateValue* const value = changed(number, DescriptionItem)) return std::get<std::string>(*value);
  const Device* const device = rig_.find(number);
  return device == nullptr ? none : device->description;
}

int32_t Simulation::boardId(int32_t number) const {
  const Device* const device = rig_.find(number);
  return static_cast<int32_t>(changedNumber(number, BoardIdItem, device == nullptr ? 0 : device->boardId));
}

int32_t Simulation::productId(int32_t number) const {
  const Device* const device = rig_.find(number);
  if (device != nullptr && device->productId) return *device->productId;
  // All children have the same.
  return isFusion(number) ? productId(children(number).front()) : 0;
}

FirmwareVersion Simulation::firmwareVersion(int32_t number, size_t chip) const {
  if (const StateValue* const value = changed(number, firmwareItem(chip)))
    return static_cast<uint16_t>(std::get<int64_t>(*value));
  return (*rig_.find(number)->firmware)[chip].version;
}

uint32_t Simulation::codeInUse(int32_t number, const Item& item, uint32_t rigCode) const {
  return static_cast<uint32_t>(changedNumber(number, item, rigCode));
}

ErrorCode Simulation::change(const std::function<ErrorCode(std::vector<StateChange>&)>& decide) {
  return guard([&] {
    ErrorCode status = Success;
    applyOwnChanges(state_.change([&](std::vector<StateChange>& changes) {
      // Only now, when no other process can change meanwhile what `decide` sees.
      if (state_.refresh(contents_)) rebuildDerived();
      if (!mismatch_.empty()) throw StateError(mismatch_);
      status = decide(changes);
      if (status != Success) changes.clear();
    }));
    return status;
  });
}

ErrorCode Simulation::hold(int32_t number) {
  // An overwrite or a calibration that could not be saved at its end must not begin: an empty change finds out.
  const ErrorCode status = change([](std::vector<StateChange>&) { return Success; });
  return status != Success ? status : guard([&] { return file_.hold(number) ? Success : ErrorDeviceBusy; });
}

void Simulation::release(int32_t number) { file_.release(number); }

ErrorCode Simulation::checkFree(int32_t number) {
  return guard([&] { return file_.isHeldElsewhere(number) ? ErrorDeviceBusy : Success; });
}

const StateValue* Simulation::changed(int32_t number, const Item& item) const {
  const auto found = contents_.find({number, item});
  return found == contents_.end() ? nullptr : &found->second;
}

int64_t Simulation::changedNumber(int32_t number, const Item& item, int64_t otherwise) const {
  const StateValue* const value = changed(number, item);
  return value == nullptr ? otherwise : std::get<int64_t>(*value);
}

DescriptionIndex& Simulation::descriptions() {
  if (!descriptions_) descriptions_ = indexed();
  return *descriptions_;
}

DescriptionIndex Simulation::indexed() const {
  DescriptionIndex index;
  for (const int32_t number : numbers()) index.add(number, description(number));
  return index;
}

// After the contents were read.
void Simulation::rebuildDerived() {
  descriptions_.reset();
  groups_ = Groups(rig_, contents_);
  mismatch_ = findMismatch(rig_, groups_, contents_);
  // A state of another rig is not used at all: its changes are of other devices.
  if (mismatch_.empty()) return;
  reportState(mismatch_);
  contents_.clear();
  groups_ = Groups(rig_, contents_);
}

// The same for a few changes, without looking at all devices.
void Simulation::applyOwnChanges(const std::vector<StateChange>& changes) {
  const auto regroupsOne = [](const StateChange& change) { return change.item == FusionItem; };
  const bool regroups = std::any_of(changes.begin(), changes.end(), regroupsOne);
  // Devices appear or disappear with their groups.
  if (regroups) descriptions_.reset();
  for (const StateChange& change : changes) {
    const bool renames = descriptions_ && change.item == DescriptionItem;
    if (renames) descriptions_->remove(change.device, description(change.device));
    applyChange(contents_, change);
    if (renames) descriptions_->add(change.device, description(change.device));
  }
  if (regroups) groups_ = Groups(rig_, contents_);
  // Of small rigs only, because it looks at all devices after each change.
  assert(!descriptions_ || rig_.devices.size() > 100 || *descriptions_ == indexed());
}

ErrorCode Simulation::reportState(const std::string& problem) const {
  report((file_.path().empty() ? "the state" : file_.path()) + ": " + problem);
  return ErrorNotSaved;
}

ErrorCode Simulation::guard(const std::function<ErrorCode()>& action) const {
  try {
    return action();
  } catch (const StateError& error) {
    return reportState(error.what());
  }
}

}  // namespace simulator
