// Several processes that change the same device: none loses a change of another.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <thread>

#include "compliance/checks/changed_device.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

using Clock = std::chrono::steady_clock;

// Of each process at least, so that they meet.
constexpr int FewestRounds = 5;
constexpr std::chrono::milliseconds ShortestTime{500};
constexpr Clock::duration ShortestPause = std::chrono::milliseconds(2);

constexpr const char* Refused = "refused";

std::wstring nameFor(int32_t number, int state) {
  return L"velq-compliance " + std::to_wstring(number) + L" " + std::to_wstring(state);
}

int32_t otherThan(int32_t id) { return id == 0 ? 1 : 0; }

// Changes one item of the device to its states 1 and 0 in turn, and each time opens the device a little later to look
// whether it is there: no other process changes this item. Returns what was lost; "refused" when a change was; nothing
// otherwise, with the item in state 0.
std::string changeOften(const std::function<bool(int state)>& change, const std::function<bool(int state)>& isThere) {
  const Clock::time_point end = Clock::now() + ShortestTime;
  for (int round = 1; round <= FewestRounds || Clock::now() < end; ++round) {
    for (const int state : {1, 0}) {
      const Clock::time_point begin = Clock::now();
      if (!change(state)) return Refused;
      // Time for a change of another process, which may write back now what it had read before.
      std::this_thread::sleep_for(std::max(ShortestPause, 3 * (Clock::now() - begin)));
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

std::string renumberThere(int32_t number) {
  return withDevice(number, [](DeviceCtrl* device) {
    const int32_t id = otherThan(DeviceCtrl_getBoardId(device));
    return failed(DeviceCtrl_setBoardId(device, id)) ? Refused : "";
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

std::string regroupOften(int32_t child) {
  int32_t group = 0;
  const auto change = [&](int state) {
    return (state == 0 ? CvxFusionDeviceRemoveChildren(group, 1, &child) : CvxFusionDeviceCreate(1, &child, &group)) ==
           Success;
  };
  // The number of a group that has ended may be that of another process's by now.
  return changeOften(change, [&](int state) { return state == 0 || childrenOf(group) == std::vector<int32_t>{child}; });
}

// Groups the first device that can be, and that no other process has grouped.
std::string regroupOne(int32_t) {
  for (const int32_t child : listedNumbers())
    if (const std::string lost = regroupOften(child); lost != Refused) return lost;
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

// One device that several processes change, and how it was before.
class SharedDevice {
 public:
  SharedDevice(ChangedDevice& device, const NextProcess& next) : device_(device), next_(next) {}

  // Another process changes one item and this one the other, with a handle that was open before. Returns whether the
  // library supports both.
  bool tryInTurn() {
    if (next_.perform({{renameThere, device_.number()}}) == Refused) return false;
    device_.wantDescription(nameFor(device_.number(), 1));
    device_.look("another process has renamed it");
    if (!renumber(otherThan(id_))) return restore(), false;
    device_.lookAround("another process has renamed it and this one has set its board id");
    if (next_.perform({{renumberThere, device_.number()}}) == Refused) return restore(), false;
    device_.wantBoardId(otherThan(otherThan(id_)));
    device_.look("another process has set its board id");
    rename();
    device_.lookAround("another process has set its board id and this one has renamed it");
    return true;
  }

  void tryAtOnce() {
    const int32_t number = device_.number();
    std::string lost = next_.perform({{renameOften, number}, {renumberOften, number}, {readOften, number}}) +
                       next_.perform({{renumberOften, number}, {regroupOne, 0}, {regroupOne, 0}});
    bool isRefused = false;
    for (size_t place = 0; (place = lost.find(Refused)) != std::string::npos; isRefused = true)
      lost.erase(place, std::char_traits<char>::length(Refused));
    device_.findings().expect(lost.empty(), "loses " + lost + "while other processes change it");
    // What is left of their changes is unknown then.
    if (isRefused) return device_.findings().refuse();
    device_.wantDescription(nameFor(number, 0));
    device_.wantBoardId(0);
    device_.lookAround("several processes have changed it at once");
  }

  void restore() {
    rename();
    renumber(id_);
    device_.lookAround("what several processes have changed was restored");
  }

 private:
  void rename() {
    if (setDescription(device_.handle(), description_) == Success) device_.wantDescription(description_);
  }

  bool renumber(int32_t id) {
    if (failed(DeviceCtrl_setBoardId(device_.handle(), id))) return false;
    device_.wantBoardId(id);
    return true;
  }

  ChangedDevice& device_;
  const NextProcess& next_;
  const std::wstring description_ = descriptionOf(device_.handle());
  const int32_t id_ = DeviceCtrl_getBoardId(device_.handle());
};

}  // namespace

void checkSharing(const CheckContext& context) {
  bool isTried = false;
  changeEach(context, [&](ChangedDevice& device) {
    if (isTried) return;
    SharedDevice shared(device, context.next);
    // The first device that takes both changes shows how the library shares them all.
    isTried = shared.tryInTurn();
    if (!isTried) return device.findings().refuse();
    shared.tryAtOnce();
    shared.restore();
  });
}

}  // namespace compliance
