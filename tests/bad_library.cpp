// The minimal library with one fault at a time, named by BAD_LIBRARY: what the probe's faults cannot bring about.
#include <clocale>
#include <csignal>
#include <filesystem>
#include <map>
#include <stdexcept>

#define CvxQuellisLibInitialize goodLibrary
#include "../examples/minimal-library/minimal_library.cpp"
#undef CvxQuellisLibInitialize

extern "C" __attribute__((visibility("default"))) const LibraryTable* CvxQuellisLibInitialize();

namespace {

std::string fault() { return std::getenv("BAD_LIBRARY"); }

const struct Loaded {
  Loaded() {
    if (fault() == "constructor") std::abort();
  }
  ~Loaded() {
    if (fault() == "destructor") std::abort();
  }
} loaded;

int recurse(int depth) {
  const volatile int here = depth;
  return depth < 0 ? here : recurse(depth + 1) + here;
}

template <void (*Act)()>
void actWhenAsked(ObjectTable& table) {
  table.DeviceCtrl_getProductId = [](auto*) { return Act(), 0x100; };
}

// Fills a version, and then does what is wrong with it.
template <ErrorCode (*Spoil)(ErrorCode status, int32_t capacity, wchar_t* text)>
void spoilVersion(ObjectTable& table) {
  table.DeviceCtrl_getDllVersion = [](auto*, int32_t capacity, wchar_t* text) {
    return Spoil(fillText(L"1.0-bad", capacity, text), capacity, text);
  };
}

template <ErrorCode (*Set)(DeviceCtrl*, int32_t count, const wchar_t*)>
void setText(ObjectTable& table) {
  table.DeviceCtrl_setDescription = Set;
}

template <ErrorCode (*Set)(DeviceCtrl*, int32_t id)>
void setId(ObjectTable& table) {
  table.DeviceCtrl_setBoardId = Set;
}

ErrorCode keepId(int32_t id) {
  return changeBoard([&](Board& board) { board.id = id; });
}

int32_t forgottenId = 0;
const Board AtStart = readBoard();

const std::map<std::string, void (*)(ObjectTable&)> Faults = {
    {"constructor", [](auto&) {}},
    {"destructor", [](auto&) {}},
    {"exit", actWhenAsked<[] { std::exit(0); }>},
    {"quick exit", actWhenAsked<[] { std::_Exit(0); }>},
    {"signal", actWhenAsked<[] { std::raise(SIGSEGV); }>},
    {"stack", actWhenAsked<[] { recurse(0); }>},
    {"throw", actWhenAsked<[] { throw std::runtime_error("no board"); }>},
    {"hang", actWhenAsked<[] { pause(); }>},
    {"print", actWhenAsked<[] { std::puts("asked"); }>},
    {"folder", actWhenAsked<[] { std::filesystem::current_path("/"); }>},
    {"locale", actWhenAsked<[] { std::setlocale(LC_ALL, "C.UTF-8"); }>},
    {"hole", [](auto& table) { table.CalibrationItem_getState = nullptr; }},
    {"overrun", spoilVersion<[](auto status, auto capacity, auto* text) { return text[capacity] = 0, status; }>},
    {"unterminated", spoilVersion<[](auto, auto capacity, auto* text) {
       return std::wmemset(text, L'x', static_cast<size_t>(capacity)), WarningTextCut;
     }>},
    {"silently cut", spoilVersion<[](auto, auto, auto*) { return Success; }>},
    {"reading changes",
     spoilVersion<[](auto status, auto, auto*) { return setDescription(nullptr, 1, L"x"), status; }>},
    {"any device",
     [](auto& table) { table.DeviceCtrl_Create = [](auto...) { return handleOf<DeviceCtrl>(boardObject); }; }},
    {"one list",
     [](auto& table) {
       table.DeviceCtrl_getInstalledDevices = [] {
         static InstalledDeviceNode node;
         static List list({&node});
         std::wcscpy(node.Description, readBoard().description);
         return list.handle();
       };
     }},
    {"unbound chips",
     [](auto& table) {
       table.FirmwareCtrls_getFirmwares = [](auto* control) { return controlOf(control).items.handle(); };
     }},
    {"rebinding",
     [](auto& table) {
       static wchar_t version[] = L"1.0";
       table.DaqCtrlBase_setSelectedDevice = [](auto* control, auto* record) {
         if (controlOf(control).isBound) version[0] = L'2';
         return setSelectedDevice(control, record);
       };
       table.FirmwareItem_getVersion = [](auto*) -> const wchar_t* { return version; };
     }},
    {"module index",
     [](auto& table) {
       table.DaqCtrlBase_getSelectedDevice = [](auto* control, auto* record) {
         const int32_t before = record->ModuleIndex;
         const ErrorCode status = getSelectedDevice(control, record);
         return record->ModuleIndex = before, status;
       };
     }},
    {"codes",
     [](auto& table) {
       table.CalibrationItem_getState = [](auto*, auto*, auto*, uint32_t* codes) {
         return codes[15] = 0, CalibrationFailed;
       };
     }},
    {"cuts a description", setText<[](auto* device, int32_t count, auto* text) {
       return setDescription(device, std::min(count, 63), text);
     }>},
    {"needs the terminator",
     setText<[](auto* device, int32_t count, auto* text) { return setDescription(device, count - 1, text); }>},
    {"negative id", setId<[](auto*, int32_t id) { return keepId(id); }>},
    {"says no but does", setId<[](auto*, int32_t id) { return keepId(id), ErrorNotOffered; }>},
    {"forgets others", setId<[](auto*, int32_t id) {
       return id != (id & 15) ? ErrorNotOffered : changeBoard([&](Board& board) { (board = AtStart).id = id; });
     }>},
    {"next process",
     [](auto& table) {
       table.DeviceCtrl_getBoardId = [](auto*) { return forgottenId; };
       table.DeviceCtrl_setBoardId = [](auto*, int32_t id) {
         return id < 0 ? ErrorNotOffered : (forgottenId = id, Success);
       };
     }},
};

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() {
  static ObjectTable objects = *goodLibrary()->objects;
  static const LibraryTable tables = {.functions = goodLibrary()->functions, .objects = &objects};
  Faults.at(fault())(objects);
  return &tables;
}
