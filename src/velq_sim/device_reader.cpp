#include "velq_sim/device_reader.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "text/escaped.h"
#include "text/one_line.h"
#include "text/utf8.h"

namespace velq_sim {

namespace {

using namespace Automation::Velq;
using simulator::Device;

constexpr size_t LongestDescription = 255;

// What reports show of a null string.
constexpr const wchar_t* NullString = L"(null)";

// As the notation of rigs has it: a number where the version reads like one.
simulator::FirmwareVersion versionFrom(const std::string& shown) {
  unsigned major = 0, minor = 0;
  if (std::sscanf(shown.c_str(), "%2x.%2x", &major, &minor) != 2) return shown;
  // sscanf() also accepts spaces, signs and any rest. They would be lost, so such a version stays a string.
  const simulator::FirmwareVersion number = static_cast<uint16_t>(major << 8U | minor);
  return simulator::shown(number) == shown ? number : shown;
}

// A null array is not an empty one: reports print "N/A" for the first and no line for the second.
template <typename Value>
std::optional<std::vector<Value>> valuesIn(Array* array) {
  return array == nullptr ? std::nullopt : std::optional(reading::valuesOf<Value>(array));
}

}  // namespace

void reportDevice(const std::wstring& description, const std::string& message) {
  const std::string line = "device " + text::escaped(description.c_str()) + ": " + message;
  fprintf(stderr, "velq-sim: %s\n", text::oneLine(line).c_str());
}

std::string nameOf(Scenario scenario) {
  return scenario == ScenarioFirmware ? "firmware control" : "calibration control";
}

std::string DeviceReader::utf8(const char* what, const std::wstring& wide, size_t longest) const {
  if (wide.size() > longest)
    report(std::string(what) + ": truncated to the " + std::to_string(longest) + " characters that a rig can have");
  const std::wstring kept = wide.substr(0, longest);
  if (const auto bytes = text::toUtf8(kept)) return *bytes;
  report(std::string(what) + ": replaced characters that are not Unicode");
  // One by one, because a conversion that fails does not say where.
  std::string bytes;
  for (const wchar_t c : kept) bytes += text::toUtf8({&c, 1}).value_or("\xEF\xBF\xBD");
  return bytes;
}

std::string DeviceReader::utf8(const char* what, const wchar_t* wide) const {
  if (wide == nullptr) report(std::string(what) + ": null");
  return utf8(what, std::wstring(wide == nullptr ? NullString : wide));
}

int32_t DeviceReader::natural(const char* what, int32_t number) const {
  if (number >= 0) return number;
  report(std::string(what) + " " + std::to_string(number) + ": replaced by 0");
  return 0;
}

// What a tool with the given room would show, or, so that it shows nothing on the copy either, a string without room
// there.
std::optional<std::string> DeviceReader::getString(const char* what, StringGetter getter, int32_t toolCapacity) const {
  for (const int32_t capacity : {toolCapacity, reading::LargeCapacity}) {
    // One more than the library is told, so that there is a terminator even where it writes none.
    std::wstring buffer(static_cast<size_t>(capacity) + 1, L'\0');
    const ErrorCode status = getter(opened_.get(), capacity, buffer.data());
    buffer.resize(buffer.find(L'\0'));
    const bool isWhole = capacity == toolCapacity
                             ? status == Success
                             : !failed(status) && std::cmp_greater_equal(buffer.size(), toolCapacity);
    if (isWhole) return utf8(what, buffer);
  }
  return std::nullopt;
}

simulator::Chip DeviceReader::readChip(FirmwareItem* chip) const {
  std::string version = utf8("version of a chip", FirmwareItem_getVersion(chip));
  if (version.starts_with("0x")) {
    report("version \"" + version + "\" of a chip: written with a capital X, so that it is not a number in the rig");
    version[1] = 'X';
  }
  return {.description = utf8("description of a chip", FirmwareItem_getDescription(chip)),
          .version = versionFrom(version),
          .notice = utf8("notice of a chip", FirmwareItem_getNotice(chip)),
          .password = std::nullopt};
}

template <typename Handle, typename Element>
std::vector<Element> DeviceReader::readEach(Array* array, ElementReader<Handle, Element> readElement) const {
  std::vector<Element> elements;
  for (void* const element : reading::elementsOf(array))
    elements.push_back((this->*readElement)(static_cast<Handle*>(element)));
  return elements;
}

simulator::AdjustingCode DeviceReader::readItem(CalibrationItem* item) const {
  // Without codes: a library reports them only for a section that was started, and that would calibrate the device.
  return {.name = utf8("name of an item", CalibrationItem_getName(item))};
}

simulator::Section DeviceReader::readSection(CalibrationSection* section) const {
  return {.description = utf8("description of a section", CalibrationSection_getDescription(section)),
          .instruction = utf8("instruction of a section", CalibrationSection_getInstruction(section)),
          .items = readEach(CalibrationSection_getItems(section), &DeviceReader::readItem)};
}

simulator::Solution DeviceReader::readSolution(CalibrationSolution* solution) const {
  return {.name = utf8("name of a solution", CalibrationSolution_getName(solution)),
          .description = utf8("description of a solution", CalibrationSolution_getDescription(solution)),
          .instruction = utf8("instruction of a solution", CalibrationSolution_getInstruction(solution)),
          .sections = readEach(CalibrationSolution_getSections(solution), &DeviceReader::readSection)};
}

template <typename Handle, typename Element>
std::optional<std::vector<Element>> DeviceReader::readControl(Scenario scenario,
                                                              ElementReader<Handle, Element> readElement) const {
  const reading::OpenControl control(DaqCtrlBase_Create(scenario));
  if (control == nullptr) return std::nullopt;
  if (!reading::bind(control.get(), DeviceCtrl_getDeviceNumber(opened_.get()))) {
    report(nameOf(scenario) + " cannot be bound, left out");
    return std::nullopt;
  }
  Array* const items = reading::itemsOf(scenario, control.get());
  return items == nullptr ? std::nullopt : std::optional(readEach(items, readElement));
}

std::optional<int32_t> DeviceReader::open() {
  opened_ = reading::openDevice(listed_);
  const int32_t number = opened_ == nullptr ? -1 : DeviceCtrl_getDeviceNumber(opened_.get());
  if (number >= 0) return number;
  report(opened_ == nullptr ? "cannot be opened, left out"
                            : "has the invalid number " + std::to_string(number) + ", left out");
  return std::nullopt;
}

Device DeviceReader::read() const {
  DeviceCtrl* const opened = opened_.get();
  const std::wstring own = reading::descriptionOf(opened);
  if (own != listed_)
    report("has the description " + text::escaped(own.c_str()) + " when it is open; the listed one is written");
  Device device;
  device.number = DeviceCtrl_getDeviceNumber(opened);
  device.productId = natural("product id", DeviceCtrl_getProductId(opened));
  device.boardId = natural("board id", DeviceCtrl_getBoardId(opened));
  // It cannot be read, and a rig with a board id above it is not valid.
  device.highestBoardId = std::max(device.boardId, Device::UsualHighestBoardId);
  // The listed one, because it is what tools match patterns with and open devices by.
  device.description = utf8("description", listed_, LongestDescription);
  device.boardVersion = getString("board version", DeviceCtrl_getBoardVersion, 10);
  device.driverVersion = getString("driver version", DeviceCtrl_getDriverVersion, 10);
  device.location = getString("location", DeviceCtrl_getLocation, 100);
  device.baseAddresses = valuesIn<uint64_t>(DeviceCtrl_getBaseAddresses(opened));
  device.interrupts = valuesIn<int32_t>(DeviceCtrl_getInterrupts(opened));
  device.firmware = readControl(ScenarioFirmware, &DeviceReader::readChip);
  device.calibration = readControl(ScenarioCalibration, &DeviceReader::readSolution);
  if (CvxIsFusionDevice(device.number) == Success) device.children = reading::childrenOf(device.number);
  return device;
}

}  // namespace velq_sim
