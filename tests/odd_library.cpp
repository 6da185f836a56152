// A device library with what real ones have and rigs have not: numbers out of order, odd strings, refusals.
#include <velq/author.h>

#include <cstdlib>
#include <string>

using namespace Automation::Velq;

namespace {

struct Board {
  int32_t number;
  std::wstring_view description;
  int32_t productId;
  int32_t boardId;
  const wchar_t* boardVersion;
  const wchar_t* firmware;  ///< version of the only chip; null: no firmware
  std::vector<int32_t> children;
};

Board boards[] = {
    {9, L"Rig", 0x99, 3, L"1.0", nullptr, {7, 3, 4, 9}},
    {7, L"QB-11 \u00FC\"\\", 0x11, 20, L"123456789", L"rev B", {}},
    {3, L"QB-11 \xD800", 0x11, -5, L"1234567890", L"1.23", {}},
    {4, L"QB-12", -2, 0, nullptr, L"0x12", {}},
    {6, L"Empty", 0x11, 0, nullptr, nullptr, {77}},
    {5, L"Locked", 0, 0, nullptr, nullptr, {}},
    {7, L"Twin", 0x11, 0, nullptr, nullptr, {}},
    {-4, L"Negative", 0, 0, nullptr, nullptr, {}},
};

Board& boardOf(Handle* handle) { return objectOf<Board>(handle); }

Board* findBoard(int32_t number, const wchar_t* description) {
  for (Board& board : boards)
    if (number < 0 ? description == board.description : number == board.number) return &board;
  return nullptr;
}

ErrorCode fillOrRefuse(const wchar_t* text, int32_t capacity, wchar_t* buffer) {
  return text == nullptr ? ErrorNotOffered : fillText(text, capacity, buffer);
}

Board* bound = nullptr;
std::wstring longLocation(1500, L'x');

void offerDevices(ObjectTable& table) {
  table.DeviceCtrl_getInstalledDevices = []() -> Array* {
    if (std::getenv("NO_LIST") != nullptr) return nullptr;
    std::vector<std::wstring_view> descriptions;
    for (const Board& board : boards) descriptions.push_back(board.description);
    return listOfDevices(std::getenv("NO_DEVICES") != nullptr ? std::vector<std::wstring_view>() : descriptions);
  };
  table.DeviceCtrl_Create = [](int32_t number, const wchar_t* description, AccessMode) {
    Board* const board = findBoard(number, description);
    return board == nullptr || board->number == 5 ? nullptr : handleOf<DeviceCtrl>(*board);
  };
  table.DeviceCtrl_getDeviceNumber = [](DeviceCtrl* device) { return boardOf(device).number; };
  table.DeviceCtrl_getDescription = [](DeviceCtrl* device, int32_t capacity, wchar_t* text) {
    return fillText(boardOf(device).description, capacity, text);
  };
  table.DeviceCtrl_getProductId = [](DeviceCtrl* device) { return boardOf(device).productId; };
  table.DeviceCtrl_getBoardId = [](DeviceCtrl* device) { return boardOf(device).boardId; };
  table.DeviceCtrl_getBoardVersion = [](DeviceCtrl* device, int32_t capacity, wchar_t* text) {
    return fillOrRefuse(boardOf(device).boardVersion, capacity, text);
  };
  table.DeviceCtrl_getLocation = [](DeviceCtrl* device, int32_t capacity, wchar_t* text) {
    return fillOrRefuse(boardOf(device).number == 7 ? longLocation.c_str() : nullptr, capacity, text);
  };
}

void offerFirmware(ObjectTable& table) {
  table.DaqCtrlBase_Create = [](Scenario kind) {
    return kind == ScenarioFirmware ? handleOf<DaqCtrlBase>(bound) : nullptr;
  };
  table.DaqCtrlBase_setSelectedDevice = [](DaqCtrlBase*, const DeviceInformation* record) {
    bound = findBoard(record->DeviceNumber, record->Description);
    return bound == nullptr ? ErrorNotOffered : Success;
  };
  table.DaqCtrlBase_getSelectedDevice = [](DaqCtrlBase*, DeviceInformation* record) {
    record->DeviceNumber = bound->number;
    return fillText(bound->description, DescriptionCapacity, record->Description);
  };
  table.DaqCtrlBase_getDevice = [](DaqCtrlBase*) { return handleOf<DeviceCtrl>(*bound); };
  table.FirmwareCtrls_getFirmwares = [](FirmwareCtrls*) -> Array* {
    static List chips{{}};
    chips = List({bound});
    return bound->firmware == nullptr ? nullptr : chips.handle();
  };
  table.FirmwareItem_getVersion = [](FirmwareItem* chip) { return boardOf(chip).firmware; };
  table.FirmwareItem_getDescription = [](FirmwareItem*) -> const wchar_t* { return L"Chip"; };
}

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() {
  const LibraryTable* const library = makeLibrary({offerDevices, offerFirmware});
  auto& functions = const_cast<FunctionTable&>(*library->functions);
  functions.CvxIsFusionDevice = [](int32_t number) {
    const Board* const board = findBoard(number, L"");
    return board == nullptr || board->children.empty() ? ErrorNotOffered : Success;
  };
  functions.CvxFusionDeviceGetChildren = [](int32_t number, int32_t* count, int32_t* children) {
    const std::vector<int32_t>& all = findBoard(number, L"")->children;
    *count = static_cast<int32_t>(std::copy(all.begin(), all.end(), children) - children);
    return Success;
  };
  return library;
}
