// Several processes that change the same device: none loses a change of another.
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "compliance/checks/changed_device.h"
#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/snapshot.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

using Clock = std::chrono::steady_clock;

// Of each process at least, so that they meet.
constexpr int FewestRounds = 5;
constexpr std::chrono::milliseconds ShortestTime{500};

constexpr const char* Refused = "refused";
constexpr const char* Unopened = "the device itself, ";

std::wstring nameFor(int32_t number, int state) {
  return L"velq-compliance " + std::to_wstring(number) + L" " + std::to_wstring(state);
}

ErrorCode rename(DeviceCtrl* device, const std::wstring& name) {
  return DeviceCtrl_setDescription(device, static_cast<int32_t>(name.size()) + 1, name.c_str());
}

// Changes one item of the device to its states 1 and 0 in turn, and looks each time whether it is there: no other
// process changes this item. Returns what was lost; "refused" when a change was; nothing otherwise, with the item in
// state 0.
std::string changeOften(const std::function<bool(int state)>& change, const std::function<bool(int state)>& isThere) {
  const Clock::time_point end = Clock::now() + ShortestTime;
  for (int round = 1; round <= FewestRounds || Clock::now() < end; ++round) {
    for (const int state : {1, 0}) {
      if (!change(state)) return Refused;
      if (!isThere(state)) return "a change in round " + std::to_string(round) + ", ";
    }
  }
  return "";
}

int32_t otherThan(int32_t id) { return id == 0 ? 1 : 0; }

// The tasks of other processes.

// Ends the process at once: a change that is done is persistent without any other call.
std::string renameThere(int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  if (device != nullptr && rename(device.get(), nameFor(number, 1)) == Success) _exit(0);
  return Refused;
}

std::string renumberThere(int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  if (device == nullptr) return Refused;
  const int32_t id = otherThan(DeviceCtrl_getBoardId(device.get()));
  return failed(DeviceCtrl_setBoardId(device.get(), id)) ? Refused : "";
}

std::string renameOften(int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  if (device == nullptr) return Unopened;
  return changeOften([&](int state) { return rename(device.get(), nameFor(number, state)) == Success; },
                     [&](int state) { return descriptionOf(device.get()) == nameFor(number, state); });
}

std::string renumberOften(int32_t number) {
  const OpenDevice device = openDevice(number, nullptr);
  if (device == nullptr) return Unopened;
  return changeOften([&](int state) { return !failed(DeviceCtrl_setBoardId(device.get(), state)); },
                     [&](int state) { return DeviceCtrl_getBoardId(device.get()) == state; });
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

// One device that two processes change, or several.
class SharedDevice {
 public:
  SharedDevice(ChangedDevice& device, const NextProcess& next)
      : device_(device),
        next_(next),
        description_(descriptionOf(device.handle())),
        id_(DeviceCtrl_getBoardId(device.handle())) {}

  // Another process changes one item and this one the other, with a handle that was open before. Returns whether the
  // library supports both.
  bool tryInTurn() {
    if (next_.perform({{renameThere, device_.number()}}) == Refused) return false;
    wantDescription(nameFor(device_.number(), 1));
    device_.look("another process has renamed it");
    if (failed(DeviceCtrl_setBoardId(device_.handle(), otherThan(id_)))) return restore(), false;
    wantId(otherThan(id_));
    device_.lookAround("another process has renamed it and this one has set its board id");
    if (next_.perform({{renumberThere, device_.number()}}) == Refused) return restore(), false;
    wantId(otherThan(otherThan(id_)));
    device_.look("another process has set its board id");
    restoreDescription();
    device_.lookAround("another process has set its board id and this one has renamed it");
    return true;
  }

  void tryAtOnce() {
    const int32_t number = device_.number();
    std::string lost = next_.perform({{renameOften, number}, {renumberOften, number}, {readOften, number}});
    bool isRefused = false;
    for (size_t place = 0; (place = lost.find(Refused)) != std::string::npos; isRefused = true)
      lost.erase(place, std::char_traits<char>::length(Refused));
    device_.expect(lost.empty(), "loses " + lost + "while other processes change it");
    // What is left of their changes is unknown then.
    if (isRefused) return device_.refuse();
    wantDescription(nameFor(number, 0));
    wantId(0);
    device_.lookAround("two processes have changed it at once");
  }

  void restore() {
    restoreDescription();
    if (!failed(DeviceCtrl_setBoardId(device_.handle(), id_))) wantId(id_);
    device_.lookAround("what several processes have changed was restored");
  }

 private:
  void wantDescription(const std::wstring& text) {
    device_.want(descriptionFact(device_.number()), show(text));
    device_.want(listedFact(device_.number()), show(text));
  }

  void wantId(int32_t id) { device_.want(boardIdFact(device_.number()), std::to_string(id)); }

  void restoreDescription() {
    if (rename(device_.handle(), description_) == Success) wantDescription(description_);
  }

  ChangedDevice& device_;
  const NextProcess& next_;
  const std::wstring description_;
  const int32_t id_;
};

}  // namespace

void checkSharing(const CheckContext& context, Findings& findings) {
  bool isTried = false;
  forEachDevice(findings, [&](DeviceCtrl* handle, const std::string& where) {
    if (isTried) return;
    ChangedDevice device(handle, where, context, findings);
    SharedDevice shared(device, context.next);
    // The first device that takes both changes shows how the library shares them all.
    isTried = shared.tryInTurn();
    if (!isTried) return device.refuse();
    shared.tryAtOnce();
    shared.restore();
  });
}

}  // namespace compliance
