// A whole device library: one board that saves changes, with one chip whose firmware can be overwritten and one
// calibration. Copy this file to start a library of your own.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <velq/author.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <list>
#include <string>

using namespace Automation::Velq;

namespace {

// --- The saved board: a file, read for every call because another process may have changed it. ---

struct Board {
  int32_t id = 0;
  int32_t firmware = 1;
  uint32_t gain = 0x80;
  wchar_t description[DescriptionCapacity] = L"Minimal board";
};

constexpr int32_t BoardNumber = 0;
constexpr uint32_t NewGain = 0x7C;
constexpr const wchar_t* Versions[] = {L"0", L"1", L"2", L"3", L"4", L"5", L"6", L"7", L"8", L"9"};

// Closed to other processes until it is closed here, so that none loses a change of another.
int openBoard(int flags) {
  const char* const file = std::getenv("MINIMAL_BOARD");
  const int descriptor = open(file == nullptr ? "/var/tmp/minimal-board" : file, flags | O_CLOEXEC | O_NOFOLLOW, 0600);
  flock(descriptor, LOCK_EX);
  return descriptor;
}

Board boardIn(int descriptor) {
  Board board;
  return pread(descriptor, &board, sizeof board, 0) == sizeof board ? board : Board();
}

Board readBoard() {
  const int descriptor = openBoard(O_RDONLY);
  const Board board = boardIn(descriptor);
  close(descriptor);
  return board;
}

ErrorCode changeBoard(const auto& change) {
  const int descriptor = openBoard(O_RDWR | O_CREAT);
  Board board = boardIn(descriptor);
  change(board);
  const bool isSaved = pwrite(descriptor, &board, sizeof board, 0) == sizeof board && fsync(descriptor) == 0;
  close(descriptor);
  return isSaved ? Success : ErrorNotOffered;
}

// --- The board. It has no state in the process, so one object serves all who open it. ---

char boardObject;
uint64_t baseAddresses[] = {0xd000};
List addressList = List::of(baseAddresses);

bool isBoard(int32_t number, const wchar_t* description) {
  if (number != -1) return number == BoardNumber;
  return description != nullptr && std::wcscmp(description, readBoard().description) == 0;
}

ErrorCode setDescription(DeviceCtrl*, int32_t count, const wchar_t* text) {
  const std::wstring_view description = textFrom(count, text);
  if (description.empty() || description.size() >= DescriptionCapacity) return ErrorNotOffered;
  return changeBoard([&](Board& board) { board.description[description.copy(board.description, 63)] = 0; });
}

ErrorCode setBoardId(DeviceCtrl*, int32_t id) {
  if (id < 0 || id > 15) return ErrorNotOffered;
  return changeBoard([&](Board& board) { board.id = id; });
}

void offerBoard(ObjectTable& table) {
  table.DeviceCtrl_getInstalledDevices = [] { return listOfDevices({readBoard().description}); };
  table.DeviceCtrl_Create = [](int32_t number, const wchar_t* description, AccessMode) {
    return isBoard(number, description) ? handleOf<DeviceCtrl>(boardObject) : nullptr;
  };
  table.DeviceCtrl_getDeviceNumber = [](auto*) { return BoardNumber; };
  table.DeviceCtrl_getDescription = [](auto*, int32_t room, wchar_t* text) {
    return fillText(readBoard().description, room, text);
  };
  table.DeviceCtrl_getProductId = [](auto*) { return 0x100; };
  table.DeviceCtrl_getBoardId = [](auto*) { return readBoard().id; };
  table.DeviceCtrl_getDllVersion = [](auto*, int32_t room, wchar_t* text) { return fillText(L"1.0-min", room, text); };
  table.DeviceCtrl_getBaseAddresses = [](auto*) { return addressList.handle(); };
  table.DeviceCtrl_setDescription = setDescription;
  table.DeviceCtrl_setBoardId = setBoardId;
}

// --- Controls. Each has one chip, or one solution with one section with one item, and serves as all of them. ---

struct Control {
  bool isBound = false;
  AccessMode mode = AccessDevice;
  int32_t loaded = -1;  // the version in the file
  int32_t pollsLeft = 0;
  List items{{this}};
};

std::list<Control> controls;  // a tool may leave some of them to the end of the process
Control& controlOf(Handle* handle) { return objectOf<Control>(handle); }

ErrorCode setSelectedDevice(DaqCtrlBase* control, const DeviceInformation* device) {
  controlOf(control).isBound = isBoard(device->DeviceNumber, device->Description);
  controlOf(control).mode = device->OpenMode;
  return controlOf(control).isBound ? Success : ErrorNotOffered;
}

ErrorCode getSelectedDevice(DaqCtrlBase* control, DeviceInformation* device) {
  if (!controlOf(control).isBound) return ErrorNotOffered;
  *device = {.DeviceNumber = BoardNumber, .OpenMode = controlOf(control).mode, .ModuleIndex = 0, .Description = {}};
  return fillText(readBoard().description, DescriptionCapacity, device->Description);
}

Array* itemsOf(auto* control) { return controlOf(control).isBound ? controlOf(control).items.handle() : nullptr; }

void offerControls(ObjectTable& table) {
  table.DaqCtrlBase_Create = [](Scenario) { return handleOf<DaqCtrlBase>(controls.emplace_back()); };
  table.DaqCtrlBase_dispose = [](auto* gone) { controls.remove_if([&](auto& c) { return &c == &controlOf(gone); }); };
  table.DaqCtrlBase_setSelectedDevice = setSelectedDevice;
  table.DaqCtrlBase_getSelectedDevice = getSelectedDevice;
  table.DaqCtrlBase_getDevice = [](DaqCtrlBase* control) {
    return controlOf(control).isBound ? handleOf<DeviceCtrl>(boardObject) : nullptr;
  };
  table.FirmwareCtrls_getFirmwares = itemsOf<FirmwareCtrls>;
  table.CalibrationCtrl_getSolutions = itemsOf<CalibrationCtrl>;
}

// A firmware file of this board is a string: "minimal 2" is version 2.
ErrorCode loadFile(FirmwareItem* chip, const wchar_t* path) {
  FILE* const file = std::fopen(std::string(path, path + std::wcslen(path)).c_str(), "r");
  if (file == nullptr) return ErrorFileUnreadable;
  int32_t version = -1;
  if (std::fscanf(file, "minimal %1d", &version) != 1) version = -1;
  std::fclose(file);
  controlOf(chip).loaded = version;
  controlOf(chip).pollsLeft = 4;
  if (version < 0) return ErrorFirmwareWrongDevice;
  return version > readBoard().firmware ? Success : WarningFirmwareNotNewer;
}

// A quarter per poll. The version is saved before the end is reported.
int32_t getProgress(FirmwareItem* chip) {
  Control& control = controlOf(chip);
  if (control.pollsLeft > 0) return 100 - 25 * control.pollsLeft--;
  return changeBoard([&](Board& board) { board.firmware = control.loaded; }) == Success ? 100 : 75;
}

void offerChip(ObjectTable& table) {
  table.FirmwareItem_getDescription = [](auto*) { return L"Bus FPGA"; };
  table.FirmwareItem_getVersion = [](auto*) { return Versions[readBoard().firmware]; };
  table.FirmwareItem_getNotice = [](auto*) { return L"Restart the computer after the overwrite."; };
  table.FirmwareItem_loadFile = loadFile;
  table.FirmwareItem_start = [](auto* chip, int32_t, const wchar_t*) {
    return controlOf(chip).loaded < 0 ? ErrorNotOffered : Success;
  };
  table.FirmwareItem_getProgress = getProgress;
}

// Three polls. One whose section was not started is not running.
CalibrationState getState(CalibrationItem* item, int64_t*, int32_t*, uint32_t* codes) {
  Control& control = controlOf(item);
  if (control.pollsLeft == 0) return CalibrationFailed;
  codes[0] = NewGain + static_cast<uint32_t>(--control.pollsLeft);
  return control.pollsLeft > 0 ? CalibrationRunning : CalibrationDone;
}

void offerSolution(ObjectTable& table) {
  table.CalibrationSolution_getName = [](auto*) { return L"AI.Auto"; };
  table.CalibrationSolution_getDescription = [](auto*) { return L"Analog input auto calibration"; };
  table.CalibrationSolution_getInstruction = [](auto*) { return L"Let the board warm up."; };
  table.CalibrationSolution_getSections = itemsOf<CalibrationSolution>;
  table.CalibrationSolution_updateAsCurrent = [](auto*) { return changeBoard([](Board& b) { b.gain = NewGain; }); };
  table.CalibrationSection_getDescription = [](auto*) { return L"Gain"; };
  table.CalibrationSection_getInstruction = [](auto*) { return L"Connect 5 V to analog input 0."; };
  table.CalibrationSection_start = [](CalibrationSection* section) {
    controlOf(section).pollsLeft = 3;
    return Success;
  };
  table.CalibrationSection_getItems = itemsOf<CalibrationSection>;
  table.CalibrationItem_getName = [](auto*) { return L"AI gain"; };
  table.CalibrationItem_getState = getState;
}

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() {
  return makeLibrary({offerBoard, offerControls, offerChip, offerSolution});
}
