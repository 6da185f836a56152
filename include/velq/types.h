// The records, enumerations and handles that cross the boundary between a tool and a Quellis device library.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Automation::Velq {

/// Status of an operation. 0 is success, 0xA....... a warning, 0xC0000000 and above a failure. A library may return any
/// value; tools distinguish these.
enum ErrorCode : uint32_t {
  Success = 0,
  WarningFirmwareNotNewer = 0xA000000D,   ///< loaded, but the version in the chip is the same or newer
  ErrorNoDeviceList = 0xE0000000,         ///< there is no list of installed devices
  ErrorDeviceBusy = 0xE0000019,           ///< another process holds the device
  ErrorCannotFuse = 0xE0000027,           ///< these devices cannot form one fusion device
  ErrorFileUnreadable = 0xE0000028,       ///< the firmware file cannot be opened or read
  ErrorFirmwareWrongDevice = 0xE0000029,  ///< the firmware file is not for this device
};

/// The lowest status that counts as a failure where warnings are accepted.
inline constexpr uint32_t FirstFailure = 0xC0000000;

/// True for a failure; false for success and for every warning.
constexpr bool failed(ErrorCode status) { return status >= FirstFailure; }

/// How a device is opened. A library may treat both alike.
enum AccessMode : int32_t {
  AccessFusion = 0,  ///< to form or dissolve a fusion device
  AccessDevice = 1,  ///< everything else
};

/// The kind of control that `DaqCtrlBase_Create` creates.
enum Scenario : uint32_t {
  ScenarioCalibration = 0x00200000,  ///< a `CalibrationCtrl`
  ScenarioFirmware = 0x00400000,     ///< a `FirmwareCtrls`
};

/// State of one calibration item. Any other value means finished, outcome unknown.
enum CalibrationState : int32_t {
  CalibrationDone = 0,
  CalibrationFailed = 1,
  CalibrationRunning = 2,  ///< poll again
};

/// What `FirmwareItem_getProgress` returns besides percentages, which are above 0.
enum FirmwareProgress : int32_t {
  ProgressStarted = 0,
  ProgressKeepPolling = -101,  ///< started, too
  ProgressAborted = -1,
  ProgressNothingLoaded = -1001,  ///< no valid file is loaded
  ProgressBusy = -1002,
  ProgressDone = 100,  ///< or more
};

/// Characters of a record's description, the terminator included.
inline constexpr int32_t DescriptionCapacity = 64;

/// The most children of a fusion device; tools have room for no more.
inline constexpr int32_t MostFusionChildren = 256;

/// How many adjusting codes `CalibrationItem_getState` has room for.
inline constexpr int32_t CalibrationCodeCount = 15;

/// Names one device to the library. Filled by the tool, and by `DaqCtrlBase_getSelectedDevice`.
struct DeviceInformation {
  int32_t DeviceNumber;                      ///< 0 and above; -1: the device is chosen by `Description` alone
  AccessMode OpenMode;                       ///< how the device is to be opened
  int32_t ModuleIndex;                       ///< module within the device; always 0
  wchar_t Description[DescriptionCapacity];  ///< always terminated, so at most 63 characters
};
static_assert(sizeof(wchar_t) == 4 && sizeof(DeviceInformation) == 268);
static_assert(offsetof(DeviceInformation, DeviceNumber) == 0 && offsetof(DeviceInformation, OpenMode) == 4);
static_assert(offsetof(DeviceInformation, ModuleIndex) == 8 && offsetof(DeviceInformation, Description) == 12);

/// Element of the array that `DeviceCtrl_getInstalledDevices` returns. Tools read the string from `Description` to its
/// terminator only, so a node may be longer or shorter than this record.
struct InstalledDeviceNode {
  unsigned char Private[36];                 ///< the library's own
  wchar_t Description[DescriptionCapacity];  ///< terminated
};
static_assert(offsetof(InstalledDeviceNode, Description) == 36);

/// Base of all handles: opaque objects that the library owns. They can be neither constructed nor copied.
class Handle {
 public:
  Handle() = delete;
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
};

class DeviceCtrl : public Handle {};            ///< one opened device
class DaqCtrlBase : public Handle {};           ///< a scenario control, bound to one device after its creation
class FirmwareCtrls : public DaqCtrlBase {};    ///< the control for `ScenarioFirmware`
class CalibrationCtrl : public DaqCtrlBase {};  ///< the control for `ScenarioCalibration`
class Array : public Handle {};                 ///< a read-only list of values or of handles
class FirmwareItem : public Handle {};          ///< the firmware slot of one programmable chip
class CalibrationSolution : public Handle {};   ///< one calibration procedure
class CalibrationSection : public Handle {};    ///< one operator-guided step of a solution
class CalibrationItem : public Handle {};       ///< one adjusting code that a section calibrates

}  // namespace Automation::Velq
