// Several processes that change the same device: none loses a change of another.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "compliance/checks/changed_device.h"

namespace compliance {

namespace {

using Clock = std::chrono::steady_clock;

// Of each process at least, with pauses and again without, so that they meet: where nothing is locked, the moment in
// which a change is lost is short.
constexpr int FewestRounds = 5;
constexpr std::chrono::milliseconds TimeWithPauses{500}, ShortestTime{2000};
constexpr Clock::duration ShortestPause = std::chrono::milliseconds(2);

// One character that no other answer has in it, for it has to be found among several.
constexpr const char* Refused = "-";

std::wstring nameFor(int32_t number, int state) {
  return L"velq-compliance " + std::to_wstring(number) + L" " + std::to_wstring(state);
}

// Changes one item of the device to its states 1 and 0 in turn, and each time opens the device to look whether it is
// there: no other process changes this item. Returns what was lost; Refused when a change was; nothing otherwise, with
// the item in state 0.
std::string changeOften(const std::function<bool(int state)>& change, const std::function<bool(int state)>& isThere) {
  const Clock::time_point begin = Clock::now(), middle = begin + TimeWithPauses, end = begin + ShortestTime;
  for (int round = 1; round <= 2 * FewestRounds || Clock::now() < end; ++round) {
    for (const int state : {1, 0}) {
      const Clock::time_point before = Clock::now();
      if (!change(state)) return Refused;
      // Time for a change of another process, which may write back now what it had read before. Later none, so that
      // more changes meet.
      if (round <= FewestRounds || before < middle)
        std::this_thread::sleep_for(std::max(ShortestPause, 3 * (Clock::now() - before)));
      if (!isThere(state)) return "a change in round " + std::to_string(round) + ", ";
    }
  }
  return "";
}

// The tasks of other processes.

std::string withDevice(int32_t number, const std::function<std::string(DeviceCtrl* device)>& task) {
  const OpenDevice device = openDevice(number, nullptr);
  return device == nullptr ? "the device itself, " : task(device.get());
}

// Ends the process at once: a change that is done is persistent without any other call.
std::string renameThere(int32_t number) {
  return withDevice(number, [=](DeviceCtrl* device) -> std::string {
    if (setDescription(device, nameFor(number, 1)) == Success) _exit(0);
    return Refused;
  });
}

std::string renameOften(int32_t number) {
  return withDevice(number, [=](DeviceCtrl* device) {
    return changeOften([=](int state) { return setDescription(device, nameFor(number, state)) == Success; },
                       [=](int state) { return openDevice(nameFor(number, state)) != nullptr; });
  });
}

std::string renumberOften(int32_t number) {
  return withDevice(number, [=](DeviceCtrl* device) {
    return changeOften([=](int state) { return !failed(DeviceCtrl_setBoardId(device, state)); },
                       [=](int state) {
                         const OpenDevice opened = openDevice(number, nullptr);
                         return opened != nullptr && DeviceCtrl_getBoardId(opened.get()) == state;
                       });
  });
}

// Groups the first device that can be, and that no other process has grouped.
std::string regroupOne(int32_t) {
  for (const int32_t child : listedNumbers()) {
    int32_t group = 0;
    const auto change = [&](int state) {
      return Success ==
             (state == 0 ? CvxFusionDeviceRemoveChildren(group, 1, &child) : CvxFusionDeviceCreate(1, &child, &group));
    };
    // The number of a group that has ended may be that of another process's by now.
    const auto isThere = [&](int state) {
      return state == 0 || sortedChildrenOf(group) == std::vector<int32_t>{child};
    };
    if (const std::string lost = changeOften(change, isThere); lost != Refused) return lost;
  }
  return "";
}

// Reads all the time: what is there before a change, or after it.
std::string readOften(int32_t number) {
  const size_t count = listedDescriptions().size();
  const Clock::time_point end = Clock::now() + ShortestTime;
  while (Clock::now() < end) {
    const OpenDevice device = openDevice(number, nullptr);
    if (device == nullptr || descriptionOf(device.get()).empty() || listedDescriptions().size() != count)
      return "devices or descriptions, ";
  }
  return "";
}

// Another process renames the device, and this one changes its board id with a handle that was open before. Returns
// whether the library takes both.
bool tryInTurn(ChangedDevice& device, int32_t otherId, const NextProcess& next) {
  if (next.perform({{renameThere, device.number()}}) == Refused) return false;
  device.wantDescription(nameFor(device.number(), 1));
  device.look("another process has renamed it");
  if (failed(device.renumber(otherId))) return false;
  device.lookAround("another process has renamed it and this one has set its board id");
  return true;
}

// `description` is the one before all changes.
void tryAtOnce(ChangedDevice& device, const std::wstring& description, const NextProcess& next) {
  const int32_t number = device.number();
  std::string lost = next.perform({{renameOften, number}, {renumberOften, number}, {readOften, number}}) +
                     next.perform({{renameOften, number}, {renumberOften, number}, {regroupOne, 0}, {regroupOne, 0}});
  const bool isRefused = std::erase(lost, *Refused) > 0;
  device.findings().expect(lost.empty(), "loses " + lost + "while other processes change it");
  // What is left of their changes is unknown then.
  if (isRefused) return device.findings().refuse();
  device.wantDescription(nameFor(number, 0));
  device.wantBoardId(0);
  device.lookAround("several processes have changed it at once");
  device.rename(description);
  device.look("they have changed it and this process has renamed it with a handle that was open before");
}

}  // namespace

void checkSharing(const CheckContext& context) {
  bool isTried = false;
  changeEach(context, [&](ChangedDevice& device) {
    // The first device that takes both changes shows how the library shares them all.
    if (isTried) return;
    const std::wstring description = descriptionOf(device.handle());
    const int32_t id = DeviceCtrl_getBoardId(device.handle());
    isTried = tryInTurn(device, id == 1 ? 0 : 1, context.next);
    if (isTried)
      tryAtOnce(device, description, context.next);
    else
      device.findings().refuse();
    device.rename(description);
    device.renumber(id);
    device.lookAround("what several processes have changed was restored");
  });
}

}  // namespace compliance
