// Texts that the library fills: never beyond the capacity, always terminated, cut only with a warning.
#include <algorithm>
#include <string>
#include <vector>

#include "compliance/check.h"
#include "compliance/devices.h"

namespace compliance {

namespace {

using TextGetter = ErrorCode (*)(DeviceCtrl*, int32_t, wchar_t*);

// Those that tools pass, and the smallest.
constexpr int32_t Capacities[] = {256, 128, 100, 64, 50, 10, 2, 1};

constexpr wchar_t Filler = 0x5A5A5A5A;
constexpr size_t GuardLength = 300;

bool isWarning(ErrorCode status) { return status >> 28 == 0xA; }

// One answer of a getter, in a buffer that shows what was written where.
struct Answer {
  Answer(TextGetter getter, DeviceCtrl* device, int32_t capacity)
      : room(static_cast<size_t>(capacity)), buffer(GuardLength + room + GuardLength, Filler) {
    status = getter(device, capacity, buffer.data() + GuardLength);
    const std::wstring written = buffer.substr(GuardLength, room);
    isTerminated = written.find(L'\0') != std::wstring::npos;
    text = written.substr(0, written.find(L'\0'));
  }

  bool isWithinCapacity() const {
    return buffer.find_first_not_of(Filler) >= GuardLength &&
           buffer.find_first_not_of(Filler, GuardLength + room) == std::wstring::npos;
  }

  size_t room;
  std::wstring buffer;
  std::wstring text;
  ErrorCode status;
  bool isTerminated;
};

void checkAnswer(const Answer& answer, const Answer& whole, Findings& findings, const std::string& where) {
  if (!findings.expect(answer.isWithinCapacity(), "writes outside of the buffer", where)) return;
  const std::string status = "status " + show(answer.status);
  if (!findings.expect(failed(answer.status) == failed(whole.status),
                       status + ", but " + show(whole.status) + " at capacity " + std::to_string(whole.room), where))
    return;
  if (failed(answer.status)) return;
  if (!findings.expect(answer.isTerminated, "no terminator, " + status, where)) return;
  if (whole.text.size() < answer.room) {
    findings.expect(answer.status == Success, status + " for a text that fits", where);
    findings.expect(answer.text == whole.text, show(answer.text.c_str()) + " instead of the whole text", where);
  } else {
    findings.expect(isWarning(answer.status), status + " for a text that is cut", where);
    findings.expect(whole.text.starts_with(answer.text), show(answer.text.c_str()) + " is no beginning of the text",
                    where);
  }
}

template <TextGetter Getter>
void checkText(const Bench&, Findings& findings) {
  forEachDevice(findings, [&](DeviceCtrl* device, const std::string& place) {
    const auto at = [&](int32_t capacity) { return place + ", capacity " + std::to_string(capacity); };
    const Answer whole(Getter, device, LargeCapacity);
    checkAnswer(whole, whole, findings, at(LargeCapacity));
    for (const int32_t capacity : Capacities)
      checkAnswer(Answer(Getter, device, capacity), whole, findings, at(capacity));
  });
}

constexpr Check List[] = {{"text-description", checkText<DeviceCtrl_getDescription>},
                          {"text-board-version", checkText<DeviceCtrl_getBoardVersion>},
                          {"text-driver-version", checkText<DeviceCtrl_getDriverVersion>},
                          {"text-library-version", checkText<DeviceCtrl_getDllVersion>},
                          {"text-location", checkText<DeviceCtrl_getLocation>}};

}  // namespace

const Checks TextChecks = List;

}  // namespace compliance
