// Two processes that change devices at once.
#include <string>

#include "compliance/checks/check.h"
#include "compliance/devices/devices.h"
#include "compliance/devices/snapshot.h"

namespace compliance {

namespace {

constexpr const wchar_t* OtherName = L"velq-compliance, other";

void renameThere(int32_t number) {
  if (const OpenDevice device = openDevice(number, nullptr))
    DeviceCtrl_setDescription(device.get(), static_cast<int32_t>(std::char_traits<wchar_t>::length(OtherName)),
                              OtherName);
}

void putBack(int32_t number, const std::wstring& description, Findings& findings) {
  const OpenDevice device = openDevice(number, nullptr);
  const ErrorCode status =
      device == nullptr
          ? ErrorNoDeviceList
          : DeviceCtrl_setDescription(device.get(), static_cast<int32_t>(description.size()) + 1, description.c_str());
  findings.expect(status == Success, "the old description is refused, status " + show(status), placeOf(description));
}

}  // namespace

// The other process renames the last device; this one, which has read everything before, renumbers the first.
void checkSharing(const CheckContext& context, Findings& findings) {
  Snapshot wanted = takeSnapshot();
  const std::vector<int32_t> numbers = listedNumbers();
  const int32_t last = numbers.back();
  const OpenDevice first = openDevice(numbers.front(), nullptr);
  const std::wstring name = listedDescriptions().back();
  const int32_t id = DeviceCtrl_getBoardId(first.get());

  context.next.look(renameThere, last);
  const std::string place = placeOf(name);
  wanted[descriptionFact(last)] = wanted[listedFact(last)] = show(OtherName);
  if (openDevice(OtherName) == nullptr && context.next.look()[descriptionFact(last)] == show(name))
    return findings.refuse(place);
  const std::string seen = firstDifference(wanted, takeSnapshot());
  findings.expect(seen.empty(), seen, "after another process has renamed " + place);
  const int32_t otherId = id == 0 ? 1 : 0;
  if (!failed(DeviceCtrl_setBoardId(first.get(), otherId)))
    wanted[boardIdFact(numbers.front())] = std::to_string(otherId);
  const std::string kept = firstDifference(wanted, context.next.look());
  findings.expect(kept.empty(), kept,
                  "after another process has renamed " + place + " and this one has set a board id");
  DeviceCtrl_setBoardId(first.get(), id);
  putBack(last, name, findings);
}

}  // namespace compliance
