#include "velq_sim/device_reader.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utility>

#include "reading/devices.h"
#include "simulator/rig/device.h"
#include "text/escaped.h"
#include "text/one_line.h"
#include "text/utf8.h"

namespace velq_sim {

namespace {

using namespace Automation::Velq;
using simulator::Device;

// In the notation of rigs: a number where the version reads like one.
std::string versionFrom(const std::string& shown) {
  unsigned major = 0, minor = 0;
  if (std::sscanf(shown.c_str(), "%2x.%2x", &major, &minor) != 2) return shown;
  const auto number = static_cast<uint16_t>(major << 8U | minor);
  // sscanf() also accepts spaces, signs and any rest. They would be lost, so such a version stays a string.
  return simulator::shown(number) == shown ? text::hexadecimal(number, 4) : shown;
}

// Leaves out null, for what a device does not have, and what a rig has unless another value is given.
Json object(Json members) {
  static const Json usual = {
      {"board_id", 0}, {"highest_board_id", Device::UsualHighestBoardId}, {"notice", simulator::Chip::UsualNotice}};
  for (auto member = members.begin(); member != members.end();)
    member = *member == usual.value(member.key(), Json()) ? members.erase(member) : std::next(member);
  return members;
}

// Reads an open device and what it consists of.
class DeviceReader {
 public:
  DeviceReader(const std::wstring& listed, DeviceCtrl* opened) : listed_(listed), opened_(opened) {}

  Json readDevice(int32_t number) const;

 private:
  using StringGetter = ErrorCode (*)(DeviceCtrl*, int32_t, wchar_t*);

  void warn(const std::string& message) const { report(listed_, message); }

  std::string utf8(const std::string& what, const wchar_t* wide, size_t longest = 1000) const {
    if (wide == nullptr) warn(what + ": null");
    // What reports show of a null string.
    std::wstring kept = wide == nullptr ? L"(null)" : wide;
    if (kept.size() > longest) {
      warn(what + ": truncated to the " + std::to_string(longest) + " characters that a rig can have");
      kept.resize(longest);
    }
    if (const auto bytes = text::toUtf8(kept)) return *bytes;
    warn(what + ": replaced characters that are not Unicode");
    // One by one, because a conversion that fails does not say where.
    std::string bytes;
    for (const wchar_t c : kept) bytes += text::toUtf8({&c, 1}).value_or("\xEF\xBF\xBD");
    return bytes;
  }

  int32_t natural(const std::string& what, int32_t number) const {
    if (number < 0) warn(what + " " + std::to_string(number) + ": replaced by 0");
    return std::max(number, 0);
  }

  // What a tool with the given room would show, or, so that it shows nothing on the copy either, a string without room
  // there.
  Json getString(const char* what, StringGetter getter, int32_t toolCapacity) const {
    for (const int32_t capacity : {toolCapacity, reading::LargeCapacity}) {
      // One more than the library is told, so that there is a terminator even where it writes none.
      std::wstring buffer(static_cast<size_t>(capacity) + 1, L'\0');
      const ErrorCode status = getter(opened_, capacity, buffer.data());
      buffer.resize(buffer.find(L'\0'));
      const bool isWhole = capacity == toolCapacity
                               ? status == Success
                               : !failed(status) && std::cmp_greater_equal(buffer.size(), toolCapacity);
      if (isWhole) return utf8(what, buffer.c_str());
    }
    return nullptr;
  }

  template <typename Element>
  Json readEach(Array* array) const {
    Json list = Json::array();
    for (void* const element : reading::elementsOf(array)) list.push_back(read(static_cast<Element*>(element)));
    return list;
  }

  // A null array is not an empty one: reports print "N/A" for the first and no line for the second.
  template <typename Element>
  Json readAny(Array* array) const {
    return array == nullptr ? Json() : readEach<Element>(array);
  }

  template <typename Element>
  Json readControl(Scenario scenario, int32_t number) const {
    const reading::OpenControl control(DaqCtrlBase_Create(scenario));
    const bool isBound = control != nullptr && reading::bind(control.get(), number);
    if (control != nullptr && !isBound) warn(reading::nameOf(scenario) + " cannot be bound, left out");
    return readAny<Element>(isBound ? reading::itemsOf(scenario, control.get()) : nullptr);
  }

  // As a string: JSON has no hexadecimal numbers, and in decimal people would not recognise an address.
  static Json read(const uint64_t* address) { return text::hexadecimal(*address, 1); }
  static Json read(const int32_t* interrupt) { return *interrupt; }

  Json read(FirmwareItem* chip) const {
    std::string version = utf8("version of a chip", FirmwareItem_getVersion(chip));
    if (version.starts_with("0x")) {
      warn("version \"" + version + "\" of a chip: written with a capital X, so that it is not a number in the rig");
      version[1] = 'X';
    }
    return object({{"description", utf8("description of a chip", FirmwareItem_getDescription(chip))},
                   {"version", versionFrom(version)},
                   {"notice", utf8("notice of a chip", FirmwareItem_getNotice(chip))}});
  }

  // Without codes: a library reports them only for a section that was started, and that would calibrate the device.
  Json read(CalibrationItem* item) const { return {{"name", utf8("name of an item", CalibrationItem_getName(item))}}; }

  Json read(CalibrationSection* section) const {
    return {{"description", utf8("description of a section", CalibrationSection_getDescription(section))},
            {"instruction", utf8("instruction of a section", CalibrationSection_getInstruction(section))},
            {"items", readEach<CalibrationItem>(CalibrationSection_getItems(section))}};
  }

  Json read(CalibrationSolution* solution) const {
    return {{"name", utf8("name of a solution", CalibrationSolution_getName(solution))},
            {"description", utf8("description of a solution", CalibrationSolution_getDescription(solution))},
            {"instruction", utf8("instruction of a solution", CalibrationSolution_getInstruction(solution))},
            {"sections", readEach<CalibrationSection>(CalibrationSolution_getSections(solution))}};
  }

  const std::wstring& listed_;
  DeviceCtrl* const opened_;
};

Json DeviceReader::readDevice(int32_t number) const {
  const std::wstring own = reading::descriptionOf(opened_);
  if (own != listed_)
    warn("has the description " + text::escaped(own.c_str()) + " when it is open; the listed one is written");
  const int32_t productId = natural("product id", DeviceCtrl_getProductId(opened_));
  const int32_t boardId = natural("board id", DeviceCtrl_getBoardId(opened_));
  return object({{"number", number},
                 // The listed one, because it is what tools match patterns with and open devices by.
                 {"description", utf8("description", listed_.c_str(), 255)},
                 {"product_id", text::hexadecimal(static_cast<uint64_t>(productId), 1)},
                 {"board_id", boardId},
                 // It cannot be read, and a rig with a board id above it is not valid.
                 {"highest_board_id", std::max(boardId, Device::UsualHighestBoardId)},
                 {"board_version", getString("board version", DeviceCtrl_getBoardVersion, 10)},
                 {"driver_version", getString("driver version", DeviceCtrl_getDriverVersion, 10)},
                 {"location", getString("location", DeviceCtrl_getLocation, 100)},
                 {"base_addresses", readAny<uint64_t>(DeviceCtrl_getBaseAddresses(opened_))},
                 {"interrupts", readAny<int32_t>(DeviceCtrl_getInterrupts(opened_))},
                 {"firmware", readControl<FirmwareItem>(ScenarioFirmware, number)},
                 {"calibration", readControl<CalibrationSolution>(ScenarioCalibration, number)},
                 {"children", CvxIsFusionDevice(number) == Success ? Json(reading::childrenOf(number)) : Json()}});
}

}  // namespace

void report(const std::wstring& description, const std::string& message) {
  const std::string line = "device " + text::escaped(description.c_str()) + ": " + message;
  fprintf(stderr, "velq-sim: %s\n", text::oneLine(line).c_str());
}

void reportMissingControls() {
  for (const Scenario scenario : {ScenarioFirmware, ScenarioCalibration}) {
    if (reading::OpenControl(DaqCtrlBase_Create(scenario)) == nullptr)
      fprintf(stderr, "velq-sim: the device library cannot create a %s, left out\n", reading::nameOf(scenario).c_str());
  }
}

void addDevice(const std::wstring& description, Devices& devices) {
  const reading::OpenDevice opened = reading::openDevice(description);
  const int32_t number = opened == nullptr ? -1 : DeviceCtrl_getDeviceNumber(opened.get());
  if (opened == nullptr)
    report(description, "cannot be opened, left out");
  else if (number < 0)
    report(description, "has the invalid number " + std::to_string(number) + ", left out");
  else if (devices.byNumber.contains(number))
    // Of several devices with one description the library can open only one by it.
    report(description, "opens device " + std::to_string(number) + ", which is listed before; left out");
  else
    devices.byNumber[number] = &devices.all.emplace_back(DeviceReader(description, opened.get()).readDevice(number));
}

}  // namespace velq_sim
