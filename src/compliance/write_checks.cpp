// Changes of descriptions and board ids: done or refused, never in between, and put back.
#include <string>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

// Callers count the terminator or do not.
enum class Count { WithTerminator, WithoutTerminator };

ErrorCode setDescription(DeviceCtrl* device, const std::wstring& text, Count count) {
  const auto length = static_cast<int32_t>(text.size());
  return DeviceCtrl_setDescription(device, count == Count::WithTerminator ? length + 1 : length, text.c_str());
}

void expectDescription(DeviceCtrl* device, const std::wstring& wanted, const std::string& after, Findings& findings,
                       const std::string& where) {
  const std::wstring now = descriptionOf(device);
  findings.expect(now == wanted, "described " + show(now.c_str()) + " after " + after, where);
  const OpenDevice opened = openDevice(wanted);
  findings.expect(opened != nullptr && DeviceCtrl_getDeviceNumber(opened.get()) == DeviceCtrl_getDeviceNumber(device),
                  "cannot be opened as " + show(wanted.c_str()) + " after " + after, where);
}

void changeDescription(DeviceCtrl* device, const std::wstring& old, Count count, Findings& findings,
                       const std::string& where) {
  const std::wstring wanted = count == Count::WithTerminator ? L"velq-compliance 1" : L"velq-compliance 2";
  const ErrorCode status = setDescription(device, wanted, count);
  const std::string change = "a change to " + show(wanted.c_str()) + " with status " + show(status);
  expectDescription(device, status == Success ? wanted : old, change, findings, where);
  const ErrorCode back = setDescription(device, old, Count::WithTerminator);
  findings.expect(back == Success, "the old description is refused, status " + show(back), where);
  expectDescription(device, old, "putting it back", findings, where);
}

void checkDescriptions(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const std::wstring old = descriptionOf(device);
    // Only what takes the description that it has is sure to take it back.
    const ErrorCode status = setDescription(device, old, Count::WithTerminator);
    expectDescription(device, old, "setting the same, status " + show(status), findings, where);
    if (status != Success) return;
    for (const Count count : {Count::WithTerminator, Count::WithoutTerminator})
      changeDescription(device, old, count, findings, where);
  });
}

void checkBoardIds(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& where) {
    const int32_t old = DeviceCtrl_getBoardId(device);
    const auto expectId = [&](int32_t wanted, ErrorCode status) {
      const int32_t id = DeviceCtrl_getBoardId(device);
      findings.expect(id == wanted,
                      "board id " + std::to_string(id) + " instead of " + std::to_string(wanted) +
                          " after a change with status " + show(status),
                      where);
    };
    ErrorCode status = DeviceCtrl_setBoardId(device, old);
    expectId(old, status);
    if (failed(status)) return;
    const int32_t other = old == 0 ? 1 : old - 1;
    status = DeviceCtrl_setBoardId(device, other);
    expectId(failed(status) ? old : other, status);
    status = DeviceCtrl_setBoardId(device, old);
    findings.expect(!failed(status), "the old board id is refused, status " + show(status), where);
    expectId(old, status);
  });
}

constexpr Check List[] = {{"write-description", checkDescriptions}, {"write-board-id", checkBoardIds}};

}  // namespace

const Checks WriteChecks = List;

}  // namespace compliance
