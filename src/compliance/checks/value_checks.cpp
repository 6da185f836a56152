// What devices return of themselves. Texts are never written beyond the capacity, always terminated, and cut only with
// a warning; arrays stay as they are for as long as what they were asked of.
#include <algorithm>

#include "compliance/checks/check.h"

namespace compliance {

namespace {

using TextGetter = ErrorCode (*)(DeviceCtrl*, int32_t, wchar_t*);

constexpr size_t GuardLength = 300;
constexpr int32_t VersionCapacity = 10;
constexpr int32_t LocationCapacity = 100;

// Those that tools pass, and all around the length of the text.
std::set<int32_t> capacitiesFor(size_t length) {
  std::set<int32_t> capacities{256, 128, 100, 64, 50, 10};
  for (int32_t capacity = 1; capacity <= static_cast<int32_t>(std::min(length + 2, GuardLength)); ++capacity)
    capacities.insert(capacity);
  return capacities;
}

bool isWarning(ErrorCode status) { return status >> 28 == 0xA; }

bool isCharacter(wchar_t c) { return c > 0 && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

// One answer of a getter, in a buffer that shows what was written where.
struct Answer {
  Answer(TextGetter getter, DeviceCtrl* device, int32_t capacity)
      : room(static_cast<size_t>(capacity)), buffer(GuardLength + room + GuardLength, Filler) {
    status = getter(device, capacity, buffer.data() + GuardLength);
    // Up to the terminator, if there is one.
    text = buffer.substr(GuardLength, room).c_str();
  }

  bool isUntouched() const { return text == std::wstring(room, Filler); }
  bool isTerminated() const { return text.size() < room; }
  bool isWithinCapacity() const {
    return buffer.find_first_not_of(Filler) >= GuardLength &&
           buffer.find_first_not_of(Filler, GuardLength + room) == std::wstring::npos;
  }

  size_t room;
  std::wstring buffer;
  std::wstring text;
  ErrorCode status;
};

void checkText(const Answer& answer, const std::wstring& whole, const Findings& here) {
  const std::string status = "status " + show(answer.status);
  here.expect(std::all_of(answer.text.begin(), answer.text.end(), isCharacter),
              show(answer.text) + " has an element that is no character");
  if (whole.size() < answer.room) {
    here.expect(answer.status == Success, status + " for a string that fits");
    here.expect(answer.text == whole, show(answer.text) + " instead of the whole string");
  } else {
    here.expect(isWarning(answer.status), status + " for a string that is cut");
    here.expect(answer.text == whole.substr(0, answer.room - 1),
                show(answer.text) + " is not the beginning of the string that there is room for");
  }
}

void checkAnswer(const Answer& answer, const Answer& whole, const Findings& here) {
  const std::string status = "status " + show(answer.status);
  if (here.expect(answer.isWithinCapacity(), "writes outside of the buffer") &&
      here.expect(failed(answer.status) == failed(whole.status),
                  status + ", but " + show(whole.status) + " at capacity " + std::to_string(whole.room)) &&
      here.expect(answer.isTerminated() || (failed(answer.status) && answer.isUntouched()),
                  "no terminator, " + status) &&
      !failed(answer.status))
    checkText(answer, whole.text, here);
}

// `toolCapacity` is the one with which tools show the string, and "N/A" for one that does not fit.
template <TextGetter Getter, int32_t toolCapacity>
void checkTexts(const CheckContext& context) {
  forEachDevice(context.findings, [](DeviceCtrl* device, const Findings& here) {
    const auto at = [&](int32_t capacity) { return here.at("capacity " + std::to_string(capacity)); };
    const Answer whole(Getter, device, LargeCapacity);
    checkAnswer(whole, whole, at(LargeCapacity));
    if (!failed(whole.status) && whole.isTerminated())
      here.expect(std::cmp_less(whole.text.size(), toolCapacity), show(whole.text) + " has more than the " +
                                                                      std::to_string(toolCapacity - 1) +
                                                                      " characters that tools have room for");
    for (const int32_t capacity : capacitiesFor(whole.text.size()))
      checkAnswer(Answer(Getter, device, capacity), whole, at(capacity));
  });
}

template <typename Value, Array* (*Getter)(DeviceCtrl*)>
void checkArrays(const CheckContext& context) {
  forEachDevice(context.findings, [](DeviceCtrl* device, const Findings& here) {
    Array* const array = Getter(device);
    if (!expectStable(array, here)) return;
    const std::vector<Value> values = valuesOf<Value>(array);
    // Any other call: a library may have one buffer for all that it returns.
    descriptionOf(device);
    Array* const again = Getter(device);
    here.expect((again == nullptr) == (array == nullptr), "once null and once not");
    here.expect(valuesOf<Value>(array) == values, "other values after other calls");
    here.expect(valuesOf<Value>(again) == values, "other values when requested again");
  });
}

}  // namespace

// The rows of checks.def.
void checkDescription(const CheckContext& context) {
  checkTexts<DeviceCtrl_getDescription, DescriptionCapacity>(context);
}
void checkBoardVersion(const CheckContext& context) {
  checkTexts<DeviceCtrl_getBoardVersion, VersionCapacity>(context);
}
void checkDriverVersion(const CheckContext& context) {
  checkTexts<DeviceCtrl_getDriverVersion, VersionCapacity>(context);
}
void checkLibraryVersion(const CheckContext& context) {
  checkTexts<DeviceCtrl_getDllVersion, VersionCapacity>(context);
}
void checkLocation(const CheckContext& context) { checkTexts<DeviceCtrl_getLocation, LocationCapacity>(context); }
void checkBaseAddresses(const CheckContext& context) { checkArrays<uint64_t, DeviceCtrl_getBaseAddresses>(context); }
void checkInterrupts(const CheckContext& context) { checkArrays<int32_t, DeviceCtrl_getInterrupts>(context); }

}  // namespace compliance
