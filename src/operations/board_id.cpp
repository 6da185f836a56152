#include "operations/board_id.h"

#include <velq/velq.h>

#include <cstdio>
#include <cwchar>

#include "operations/library_text.h"
#include "operations/number.h"
#include "qutil/arguments.h"

using namespace Automation::Velq;

namespace {

constexpr int32_t LongestDescription = 128;

std::wstring withoutSpaces(std::wstring text) {
  std::erase(text, L' ');
  return text;
}

ErrorCode renumberDescription(DeviceCtrl* device, const std::wstring& description, int32_t boardId) {
  // From the first "#" on, so that an old id is replaced and not appended to.
  const std::wstring stem = description.substr(0, description.find(L'#'));
  TextBuffer<LongestDescription> renumbered;
  swprintf(renumbered.data(), LongestDescription, L"%S#%d", stem.c_str(), boardId);
  const auto length = static_cast<int32_t>(std::wcslen(renumbered.data()));
  return DeviceCtrl_setDescription(device, length + 1, renumbered.data());
}

}  // namespace

int changeBoardID(std::string option, DeviceInformation& device) {
  const std::string digits = afterColon(option);
  // Quirk: nothing behind the colon counts as 0.
  if (!isAllDigits(digits)) {
    puts("You should input a digit after ci:");
    return -1;
  }
  DeviceCtrl* const opened = DeviceCtrl_Create(device.DeviceNumber, device.Description, device.OpenMode);
  if (opened == nullptr) return -2;
  const int32_t boardId = parseNumber(digits);
  puts("Change device BoardID start!");
  TextBuffer<LongestDescription> current;
  DeviceCtrl_getDescription(opened, current.capacity, current.data());
  if (failed(DeviceCtrl_setBoardId(opened, boardId))) {
    printf("Failed to change Board ID of device %d! (Errorlevel = %d).\n", DeviceCtrl_getDeviceNumber(opened), 3);
    return -1;
  }
  // Quirk: reported before the description is rewritten, whether that then succeeds or not.
  const std::wstring description = withoutSpaces(current.data());
  printf("Change the Board ID of device %d(%S) success.\n", DeviceCtrl_getDeviceNumber(opened), description.c_str());
  if (renumberDescription(opened, description, boardId) != Success) {
    puts("update device description error!");
    return -1;
  }
  DeviceCtrl_dispose(opened);
  return 0;
}
