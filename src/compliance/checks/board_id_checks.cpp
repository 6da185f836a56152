// Changes of board ids: done or refused, never in between, persistent, and restored.
#include <string>

#include "compliance/checks/changed_device.h"
#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"

namespace compliance {

using namespace Automation::Velq;

namespace {

// Around where a board's highest id may lie, which is the board's own affair.
constexpr int32_t Candidates[] = {0,  1,  2,  3,   4,   6,     7,         8,  14,       15,
                                  16, 31, 32, 255, 256, 65536, INT32_MAX, -1, INT32_MIN};

// Returns whether the library has taken it.
bool tryOut(ChangedDevice& device, int32_t id) {
  const ErrorCode status = DeviceCtrl_setBoardId(device.handle(), id);
  const std::string shown = std::to_string(id);
  device.expect(failed(status) || id >= 0, "takes the board id " + shown);
  const bool isTaken = !failed(status) && id >= 0;
  if (isTaken) device.want(boardIdFact(device.number()), shown);
  device.look("a change of the board id to " + shown + " with status " + show(status));
  return isTaken;
}

void changeBoardIds(ChangedDevice& device) {
  const int32_t own = DeviceCtrl_getBoardId(device.handle());
  const OpenDevice openedBefore = openDevice(device.number(), nullptr);
  // First its own id, which every board that has settable ids takes.
  int taken = tryOut(device, own);
  for (const int32_t id : Candidates) taken += tryOut(device, id);
  if (taken == 0) return device.refuse();
  const int32_t elsewhere = DeviceCtrl_getBoardId(openedBefore.get());
  device.expect(elsewhere == DeviceCtrl_getBoardId(device.handle()),
                "has the board id " + std::to_string(elsewhere) + " in a handle that was open before the change");
  device.lookAround("changes of the board id");
  if (own < 0) return;
  const ErrorCode status = DeviceCtrl_setBoardId(device.handle(), own);
  device.expect(!failed(status), "the old board id is refused, status " + show(status));
  device.want(boardIdFact(device.number()), std::to_string(own));
  device.lookAround("the old board id was restored");
}

}  // namespace

void checkBoardIdChanges(const CheckContext& context, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* handle, const std::string& where) {
    ChangedDevice device(handle, where, context, findings);
    changeBoardIds(device);
  });
}

}  // namespace compliance
