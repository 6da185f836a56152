// Reading one device of any library, as a rig holds it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "reading/devices.h"
#include "simulator/rig/device.h"

namespace velq_sim {

/// Writes a line about the device with this description to standard error.
void reportDevice(const std::wstring& description, const std::string& message);

/// "firmware control" or "calibration control"
std::string nameOf(Automation::Velq::Scenario scenario);

/// Reads one listed device. What a rig cannot hold is changed as little as possible, and is a line on standard error.
class DeviceReader {
 public:
  explicit DeviceReader(const std::wstring& description) : listed_(description) {}

  /// Opens the device and returns its number. Nothing, after a line, when it cannot be opened or has no valid number.
  std::optional<int32_t> open();

  /// Reads what is opened.
  simulator::Device read() const;

 private:
  using StringGetter = Automation::Velq::ErrorCode (*)(Automation::Velq::DeviceCtrl*, int32_t, wchar_t*);
  template <typename Handle, typename Element>
  using ElementReader = Element (DeviceReader::*)(Handle*) const;
  static constexpr size_t LongestString = 1000;

  void report(const std::string& message) const { reportDevice(listed_, message); }
  std::string utf8(const char* what, const std::wstring& wide, size_t longest = LongestString) const;
  std::string utf8(const char* what, const wchar_t* wide) const;
  int32_t natural(const char* what, int32_t number) const;
  std::optional<std::string> getString(const char* what, StringGetter getter, int32_t toolCapacity) const;
  simulator::Chip readChip(Automation::Velq::FirmwareItem* chip) const;
  simulator::AdjustingCode readItem(Automation::Velq::CalibrationItem* item) const;
  simulator::Section readSection(Automation::Velq::CalibrationSection* section) const;
  simulator::Solution readSolution(Automation::Velq::CalibrationSolution* solution) const;
  template <typename Handle, typename Element>
  std::vector<Element> readEach(Automation::Velq::Array* array, ElementReader<Handle, Element> readElement) const;
  template <typename Handle, typename Element>
  std::optional<std::vector<Element>> readControl(Automation::Velq::Scenario scenario,
                                                  ElementReader<Handle, Element> readElement) const;

  const std::wstring listed_;
  reading::OpenDevice opened_;
};

}  // namespace velq_sim
