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

template <bool (*Opens)(int32_t number, const wchar_t* description, AccessMode mode)>
void openWhere(ObjectTable& table) {
  table.DeviceCtrl_Create = [](int32_t number, const wchar_t* description, AccessMode mode) {
    return Opens(number, description, mode) ? handleOf<DeviceCtrl>(boardObject) : nullptr;
  };
}

template <bool (*Binds)(const Control& control, const DeviceInformation& record)>
void bindWhere(ObjectTable& table) {
  table.DaqCtrlBase_setSelectedDevice = [](DaqCtrlBase* control, const DeviceInformation* record) {
    return Binds(controlOf(control), *record) ? setSelectedDevice(control, record) : ErrorNotOffered;
  };
}

// Fills the record of a bound control, and then does what is wrong with it.
template <void (*Spoil)(DeviceInformation* record)>
void spoilRecord(ObjectTable& table) {
  table.DaqCtrlBase_getSelectedDevice = [](DaqCtrlBase* control, DeviceInformation* record) {
    const ErrorCode status = getSelectedDevice(control, record);
    if (status == Success) Spoil(record);
    return status;
  };
}

wchar_t commonText[] = L"0";

// All texts but those that tell one chip or solution from another.
void giveTexts(ObjectTable& table, auto give) {
  table.FirmwareItem_getNotice = give;
  table.CalibrationSolution_getDescription = table.CalibrationSolution_getInstruction = give;
  table.CalibrationSection_getDescription = table.CalibrationSection_getInstruction = give;
  table.CalibrationItem_getName = give;
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

const Board AtStart = readBoard();
int32_t forgottenId = 0;

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
    {"signal handler", actWhenAsked<[] { std::signal(SIGTERM, SIG_IGN); }>},
    {"closed output", actWhenAsked<[] { close(STDOUT_FILENO); }>},
    {"hole", [](auto& table) { table.CalibrationItem_getState = nullptr; }},
    {"overrun", spoilVersion<[](auto status, auto capacity, auto* text) { return text[capacity] = 0, status; }>},
    {"unterminated", spoilVersion<[](auto, auto capacity, auto* text) {
       return std::wmemset(text, L'x', static_cast<size_t>(capacity)), WarningTextCut;
     }>},
    {"underrun", spoilVersion<[](auto status, auto, auto* text) { return text[-1] = 0, status; }>},
    {"always warns", spoilVersion<[](auto, auto, auto*) { return WarningTextCut; }>},
    {"surrogate", spoilVersion<[](auto status, auto capacity, auto* text) {
       return text[0] = capacity != 1 ? wchar_t{0xD800} : text[0], status;
     }>},
    {"other text", spoilVersion<[](auto status, auto capacity, auto* text) {
       return text[0] = capacity == 3 || capacity == 100 ? L'2' : text[0], status;
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
    {"changing list",
     [](auto& table) {
       table.DeviceCtrl_getInstalledDevices = [] {
         static InstalledDeviceNode node{{}, L"0"};
         static List list({&node});
         return ++node.Description[0], list.handle();
       };
     }},
    {"names",
     [](auto& table) { table.DeviceCtrl_getInstalledDevices = [] { return listOfDevices({L"", L""}); }; }},
    {"long name",
     [](auto& table) {
       table.DeviceCtrl_getInstalledDevices = [] {
         static std::wstring node(offsetof(InstalledDeviceNode, Description) / sizeof(wchar_t) + 64, L'x');
         static List list({node.data()});
         return list.handle();
       };
     }},
    {"counting addresses",
     [](auto& table) {
       table.DeviceCtrl_getDescription = [](auto*, int32_t room, wchar_t* text) {
         return ++baseAddresses[0], fillText(readBoard().description, room, text);
       };
     }},
    {"not for fusion", openWhere<[](int32_t number, const wchar_t* text, AccessMode mode) {
       return mode != AccessFusion && isBoard(number, text);
     }>},
    {"negative number", openWhere<[](int32_t number, const wchar_t* text, AccessMode) {
       return isBoard(std::max(number, -1), text);
     }>},
    {"any case", openWhere<[](int32_t number, const wchar_t* text, AccessMode) {
       return isBoard(number, text) || (number == -1 && text != nullptr && wcscasecmp(text, AtStart.description) == 0);
     }>},
    {"unbound device",
     [](auto& table) { table.DaqCtrlBase_getDevice = [](auto*) { return handleOf<DeviceCtrl>(boardObject); }; }},
    {"unbound solutions",
     [](auto& table) {
       table.CalibrationCtrl_getSolutions = [](auto* control) { return controlOf(control).items.handle(); };
     }},
    {"bound once", bindWhere<[](const Control& control, const DeviceInformation&) { return !control.isBound; }>},
    {"stays bound", bindWhere<[](const Control&, const DeviceInformation& record) {
       return isBoard(record.DeviceNumber, record.Description);
     }>},
    {"other number", spoilRecord<[](auto* record) { record->DeviceNumber = 1; }>},
    {"other mode", spoilRecord<[](auto* record) { record->OpenMode = AccessDevice; }>},
    {"module index", spoilRecord<[](auto* record) { record->ModuleIndex = 1; }>},
    {"old record", spoilRecord<[](auto* record) { std::wcscpy(record->Description, AtStart.description); }>},
    {"long record", spoilRecord<[](auto* record) { record[1].DeviceNumber = 0; }>},
    {"null texts", [](auto& table) { giveTexts(table, [](auto*) -> const wchar_t* { return nullptr; }); }},
    {"one text",
     [](auto& table) {
       giveTexts(table, [](auto*) -> const wchar_t* { return commonText; });
       table.DaqCtrlBase_Create = [](Scenario) {
         return ++commonText[0], handleOf<DaqCtrlBase>(controls.emplace_back());
       };
     }},
    {"rebinding",
     [](auto& table) {
       giveTexts(table, [](auto*) -> const wchar_t* { return commonText; });
       table.DaqCtrlBase_setSelectedDevice = [](auto* control, auto* record) {
         if (controlOf(control).isBound) ++commonText[0];
         return setSelectedDevice(control, record);
       };
     }},
    {"name by id",
     [](auto& table) { table.CalibrationSolution_getName = [](auto*) { return Versions[readBoard().id % 10]; }; }},
    {"version by id",
     [](auto& table) { table.FirmwareItem_getVersion = [](auto*) { return Versions[readBoard().id % 10]; }; }},
    {"codes",
     [](auto& table) {
       table.CalibrationItem_getState = [](auto*, auto*, auto*, uint32_t* codes) {
         return codes[15] = 0, CalibrationFailed;
       };
     }},
    {"no way back", setText<[](auto* device, int32_t count, auto* text) {
       return std::wcscmp(text, AtStart.description) == 0 ? ErrorNotOffered : setDescription(device, count, text);
     }>},
    {"warns of a change", setText<[](auto* device, int32_t count, auto* text) {
       return setDescription(device, count, text), WarningTextCut;
     }>},
    {"no id back", setId<[](auto*, int32_t id) { return id == 0 || id != (id & 15) ? ErrorNotOffered : keepId(id); }>},
    {"cuts a description", setText<[](auto* device, int32_t count, auto* text) {
       return setDescription(device, std::min(count, 63), text);
     }>},
    {"needs the terminator",
     setText<[](auto* device, int32_t count, auto* text) { return setDescription(device, count - 1, text); }>},
    {"says no but does", setId<[](auto*, int32_t id) { return keepId(id), ErrorNotOffered; }>},
    {"forgets others", setId<[](auto*, int32_t id) {
       return id != (id & 15) ? ErrorNotOffered : changeBoard([&](Board& board) { 
         if (board.id != id) (board = AtStart).id = id;
       });
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
