// The minimal library with one fault at a time, named by BAD_LIBRARY: what the probe's faults cannot bring about.
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <clocale>
#include <csignal>
#include <cstring>
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
    if (fault() == "last words") std::puts("bye");
    if (fault() == "silent end") _exit(0);
  }
} loaded;

using Table = ObjectTable;

// Lets all the operations answer so.
template <auto Answer, auto... Operations>
void answer(Table& table) {
  ((table.*Operations = Answer), ...);
}

template <void (*Act)()>
void actWhenAsked(Table& table) {
  table.DeviceCtrl_getProductId = [](auto*) { return Act(), 0x100; };
}

// Fills a version, and then does what is wrong with it.
template <ErrorCode (*Spoil)(ErrorCode status, int32_t capacity, wchar_t* text)>
void spoilVersion(Table& table) {
  table.DeviceCtrl_getDllVersion = [](auto*, int32_t capacity, wchar_t* text) {
    return Spoil(fillText(L"1.0-bad", capacity, text), capacity, text);
  };
}

// Fills the record of a bound control, and then does what is wrong with it.
template <void (*Spoil)(DeviceInformation* record)>
void spoilRecord(Table& table) {
  table.DaqCtrlBase_getSelectedDevice = [](DaqCtrlBase* control, DeviceInformation* record) {
    const ErrorCode status = getSelectedDevice(control, record);
    return status == Success ? Spoil(record), status : status;
  };
}

template <bool (*IsRight)(int32_t number, const wchar_t* description, AccessMode mode)>
void openWhere(Table& table) {
  table.DeviceCtrl_Create = [](int32_t number, const wchar_t* text, AccessMode mode) {
    return IsRight(number, text, mode) ? handleOf<DeviceCtrl>(boardObject) : nullptr;
  };
}

wchar_t letters[] = L"0";

// All texts but those that tell one chip or solution from another.
constexpr auto haveCommonTexts =
    answer<[](auto*) -> const wchar_t* { return letters; }, &Table::FirmwareItem_getNotice,
           &Table::CalibrationSolution_getDescription, &Table::CalibrationSolution_getInstruction,
           &Table::CalibrationSection_getDescription, &Table::CalibrationSection_getInstruction,
           &Table::CalibrationItem_getName>;

template <ErrorCode (*Set)(DeviceCtrl*, int32_t count, const wchar_t*)>
constexpr auto setText = answer<Set, &Table::DeviceCtrl_setDescription>;

template <ErrorCode (*Set)(int32_t id)>
constexpr auto setId = answer<[](DeviceCtrl*, int32_t id) { return Set(id); }, &Table::DeviceCtrl_setBoardId>;

const Board AtStart = readBoard();

ErrorCode keepId(int32_t id) {
  return changeBoard([&](Board& board) { board.id = id; });
}

ErrorCode keepIdAlone(int32_t id) {
  return changeBoard([&](Board& board) {
    if (board.id != id) (board = AtStart).id = id;
  });
}

List sharedList({});
int32_t forgottenId = 0;

// Changes the board when the process ends.
struct LastChange {
  ~LastChange() { keepId(9); }
};

// The library without the fault: the minimal one, or another where several devices are needed.
const LibraryTable& sound() {
  const char* const file = std::getenv("BAD_BASE");
  void* const entry = file == nullptr ? nullptr : dlsym(dlopen(file, RTLD_NOW), "CvxQuellisLibInitialize");
  return entry == nullptr ? *goodLibrary() : *reinterpret_cast<decltype(&goodLibrary)>(entry)();
}

const LibraryTable& good = sound();
FunctionTable functions = *good.functions;

const std::map<std::string, void (*)(Table&)> Faults = {
    {"constructor", [](auto&) {}},
    {"destructor", [](auto&) {}},
    {"last words", [](auto&) {}},
    {"silent end", [](auto&) {}},
    {"exit", actWhenAsked<[] { std::exit(0); }>},
    {"signal", actWhenAsked<[] { std::raise(SIGRTMIN); }>},
    {"throw", actWhenAsked<[] { throw std::runtime_error("no board"); }>},
    {"hang", actWhenAsked<[] { pause(); }>},
    {"throw a number", actWhenAsked<[] { throw 1; }>},
    {"kills its parent", actWhenAsked<[] { kill(getppid(), SIGKILL); }>},
    {"signals its parent", actWhenAsked<[] { kill(getppid(), SIGRTMIN); }>},
    {"kills its group", actWhenAsked<[] { kill(0, SIGKILL); }>},
    {"signals everything", actWhenAsked<[] { kill(-1, SIGTERM); }>},
    {"seeks everywhere", actWhenAsked<[] {
       for (int i = 0; i < 20; ++i) lseek(i, 1L << 40, SEEK_SET), i += ftruncate(i, 1L << 40) == 1;
     }>},
    {"closes all", actWhenAsked<[] { closefrom(0); }>},
    {"opens without end", actWhenAsked<[] { while (open("/", O_PATH) >= 0); }>},
    {"prints without end", actWhenAsked<[] { while (true) std::puts("asked"), std::fflush(stdout); }>},
    {"takes memory", actWhenAsked<[] { while (true) std::memset(std::malloc(1 << 20), 1, 1 << 20); }>},
    {"takes too much memory", actWhenAsked<[] { operator delete(operator new(size_t{3} << 30)); }>},
    {"leaves processes", actWhenAsked<[] { if (fork() == 0) setsid(), fork(), pause(); }>},
    {"print", actWhenAsked<[] { std::puts("asked"); }>},
    {"folder", actWhenAsked<[] { std::filesystem::current_path("/"); }>},
    {"locale", actWhenAsked<[] { std::setlocale(LC_ALL, "C.UTF-8"); }>},
    {"signal handler", actWhenAsked<[] { std::signal(SIGALRM, SIG_IGN); }>},
    {"blocked signals", actWhenAsked<[] { sigset_t all; sigfillset(&all), sigprocmask(SIG_BLOCK, &all, nullptr); }>},
    {"alarm", actWhenAsked<[] { alarm(1000); }>},
    {"umask", actWhenAsked<[] { umask(0); }>},
    {"environment", actWhenAsked<[] { unsetenv("LC_ALL"); }>},
    {"input", actWhenAsked<[] { std::getchar(); }>},
    {"closed output", actWhenAsked<[] { close(STDOUT_FILENO); }>},
    {"hole", answer<nullptr, &Table::CalibrationItem_getState>},
    {"overrun", spoilVersion<[](auto status, auto capacity, auto* text) { return text[capacity] = 0, status; }>},
    {"unterminated", spoilVersion<[](auto, auto capacity, auto* text) {
       return std::wmemset(text, L'x', static_cast<size_t>(capacity)), WarningTextCut;
     }>},
    {"long version", answer<[](auto*, int32_t capacity, wchar_t* text) { return fillText(L"1.0-minima", capacity, text); },
                            &Table::DeviceCtrl_getDllVersion>},
    {"always warns", spoilVersion<[](auto, auto, auto*) { return WarningTextCut; }>},
    {"surrogate", spoilVersion<[](auto status, auto capacity, auto* text) {
       return text[0] = capacity % 2 == 0 && capacity < 1024 ? wchar_t{0xD800} : text[0], status;
     }>},
    {"silently cut", spoilVersion<[](auto, auto, auto*) { return Success; }>},
    {"reading changes",
     spoilVersion<[](auto status, auto, auto*) { return setDescription(nullptr, 1, L"x"), status; }>},
    {"any device", openWhere<[](auto, auto*, auto) { return true; }>},
    {"no fusion mode",
     openWhere<[](auto number, auto* text, auto mode) { return mode != AccessFusion && isBoard(number, text); }>},
    {"alike", openWhere<[](auto number, auto* text, auto) {
       return number != -1 ? isBoard(number, text) : text != nullptr && wcsncasecmp(text, AtStart.description, 12) == 0;
     }>},
    {"old name", openWhere<[](auto number, auto* text, auto) {
       return isBoard(number, text) || (number == -1 && text != nullptr && wcscmp(text, AtStart.description) == 0);
     }>},
    {"one list", answer<[] {
       static InstalledDeviceNode node;
       static List list({&node});
       return std::wcscpy(node.Description, readBoard().description), list.handle();
     }, &Table::DeviceCtrl_getInstalledDevices>},
    {"changing list", answer<[] {
       static InstalledDeviceNode node{{}, L"0"};
       static List list({&node});
       return ++node.Description[0], list.handle();
     }, &Table::DeviceCtrl_getInstalledDevices>},
    {"long name", answer<[] {
       static std::wstring node(offsetof(InstalledDeviceNode, Description) / sizeof(wchar_t) + 64, L'x');
       static List list({node.data()});
       return list.handle();
     }, &Table::DeviceCtrl_getInstalledDevices>},
    {"no names", answer<[] { return listOfDevices({L"", L""}); }, &Table::DeviceCtrl_getInstalledDevices>},
    {"moving addresses", answer<[](auto*) {
       static uint64_t values[100], *next = values;
       static List list({});
       return (list = List({next++})).handle();
     }, &Table::DeviceCtrl_getBaseAddresses, &Table::DeviceCtrl_getInterrupts>},
    {"counting addresses", answer<[](auto*, int32_t room, wchar_t* text) {
       return ++baseAddresses[0], fillText(readBoard().description, room, text);
     }, &Table::DeviceCtrl_getDescription>},
    {"shared items", answer<[](auto* control) {
       return controlOf(control).isBound ? (sharedList = List({control})).handle() : nullptr;
     }, &Table::FirmwareCtrls_getFirmwares, &Table::CalibrationCtrl_getSolutions,
        &Table::CalibrationSolution_getSections,
        &Table::CalibrationSection_getItems>},
    {"unbound device", answer<[](auto*) { return handleOf<DeviceCtrl>(boardObject); }, &Table::DaqCtrlBase_getDevice>},
    {"unbound solutions", answer<[](auto* control) { return controlOf(control).items.handle(); },
                                 &Table::CalibrationCtrl_getSolutions>},
    {"bound once", answer<[](auto* control, auto* record) {
       return controlOf(control).isBound ? ErrorNotOffered : setSelectedDevice(control, record);
     }, &Table::DaqCtrlBase_setSelectedDevice>},
    {"binds what it refuses", answer<[](auto* control, auto* record) {
       const ErrorCode status = setSelectedDevice(control, record);
       return controlOf(control).isBound = true, status;
     }, &Table::DaqCtrlBase_setSelectedDevice>},
    {"refuses what it binds", answer<[](auto* control, auto* record) {
       return setSelectedDevice(control, record), ErrorNotOffered;
     }, &Table::DaqCtrlBase_setSelectedDevice>},
    {"several: first chips", answer<[](auto* control) {
       static std::map<void*, Array*> first;
       if (good.objects->DaqCtrlBase_getDevice(control) == nullptr) return first[nullptr];
       Array*& kept = first[control];
       return kept = kept == nullptr ? good.objects->FirmwareCtrls_getFirmwares(control) : kept;
     }, &Table::FirmwareCtrls_getFirmwares>},
    {"several: check adds", [](auto&) {
       functions.CvxFusionDeviceCheckChildren = good.functions->CvxFusionDeviceAddChildren;
     }},
    {"several: no single child", [](auto&) {
       functions.CvxFusionDeviceCreate = [](int32_t count, const int32_t* children, int32_t* number) {
         return count == 1 ? ErrorCannotFuse : good.functions->CvxFusionDeviceCreate(count, children, number);
       };
     }},
    {"several: hidden device", answer<[](int32_t number, const wchar_t* text, AccessMode mode) {
       return good.objects->DeviceCtrl_Create(number == 5 ? 0 : number, text, mode);
     }, &Table::DeviceCtrl_Create>},
    {"stays bound", answer<[](auto* control, auto* record) {
       return isBoard(record->DeviceNumber, record->Description) ? setSelectedDevice(control, record) : ErrorNotOffered;
     }, &Table::DaqCtrlBase_setSelectedDevice>},
    {"rebinding", [](auto& table) {
       haveCommonTexts(table);
       table.DaqCtrlBase_setSelectedDevice = [](auto* control, auto* record) {
         letters[0] += controlOf(control).isBound;
         return setSelectedDevice(control, record);
       };
     }},
    {"other mode", spoilRecord<[](auto* record) { record->OpenMode = AccessDevice; }>},
    {"old record", spoilRecord<[](auto* record) { std::wcscpy(record->Description, AtStart.description); }>},
    {"long record", spoilRecord<[](auto* record) { record[1].DeviceNumber = 0; }>},
    {"no children", [](auto&) {
       functions.CvxFusionDeviceGetChildren = [](int32_t number, int32_t* count, int32_t*) {
         return *count = 0, number == BoardNumber ? Success : ErrorNotOffered;
       };
       functions.CvxIsFusionDevice = [](int32_t number) { return number == BoardNumber ? Success : ErrorNotOffered; };
     }},
    {"codes", answer<[](auto*, auto*, auto*, uint32_t* codes) { return codes[15] = 0, CalibrationFailed; },
                     &Table::CalibrationItem_getState>},
    {"address by id", answer<[](auto*) {
       return baseAddresses[0] = static_cast<uint64_t>(readBoard().id), addressList.handle();
     }, &Table::DeviceCtrl_getBaseAddresses>},
    {"name by id", answer<[](auto*) { return Versions[readBoard().id % 10]; }, &Table::CalibrationSolution_getName>},
    {"chip by id", answer<[](auto* control) { return readBoard().id == 0 ? nullptr : itemsOf(control); },
                          &Table::FirmwareCtrls_getFirmwares>},
    {"no way back", setText<[](auto* device, int32_t count, auto* text) {
       return std::wcscmp(text, AtStart.description) == 0 ? ErrorNotOffered : setDescription(device, count, text);
     }>},
    {"warns of a change", setText<[](auto* device, int32_t count, auto* text) {
       return setDescription(device, count, text), WarningTextCut;
     }>},
    {"cuts a description", setText<[](auto* device, int32_t count, auto* text) {
       return setDescription(device, std::min(count, 63), text);
     }>},
    {"needs the terminator",
     setText<[](auto* device, int32_t count, auto* text) { return setDescription(device, count - 1, text); }>},
    {"no id back", setId<[](int32_t id) { return id == 0 || id != (id & 15) ? ErrorNotOffered : keepId(id); }>},
    {"forgets others", setId<[](int32_t id) { return id != (id & 15) ? ErrorNotOffered : keepIdAlone(id); }>},
    {"crashes in a change", setId<[](int32_t id) { return keepId(id), id == 3 ? raise(SIGSEGV) : 0, Success; }>},
    {"crashes for good", setId<[](int32_t id) {
       const bool isBroken = readBoard().id == 3;
       return keepId(isBroken ? 3 : id), isBroken || id == 3 ? raise(SIGSEGV) : 0, Success;
     }>},
    {"crashes once changed", answer<[](auto*) { return readBoard().id == 3 ? raise(SIGSEGV) : readBoard().id; },
                                    &Table::DeviceCtrl_getBoardId>},
    {"hangs in a change", setId<[](int32_t id) { return keepId(id), id == 3 ? pause() : 0, Success; }>},
    {"changes at its end", setId<[](int32_t id) {
       static const LastChange last;
       return id != (id & 15) ? ErrorNotOffered : keepId(id);
     }>},
    {"keeps a lock", setId<[](int32_t id) { return keepId(id), id == 3 ? openBoard(O_RDWR) : 0, Success; }>},
    {"crashes in a rename", setText<[](auto* device, int32_t count, auto* text) {
       const ErrorCode status = setDescription(device, count, text);
       return text[0] == 'l' ? raise(SIGSEGV) : 0, status;
     }>},
    {"several: crashes in a group", [](auto&) {
       functions.CvxFusionDeviceAddChildren = [](int32_t number, int32_t count, const int32_t* children) {
         const ErrorCode status = good.functions->CvxFusionDeviceAddChildren(number, count, children);
         return status == Success ? raise(SIGSEGV) : 0, status;
       };
     }},
    {"several: writes an id back", [](auto&) {
       static DeviceCtrl* const device = good.objects->DeviceCtrl_Create(0, nullptr, AccessDevice);
       static const int32_t id = good.objects->DeviceCtrl_getBoardId(device);
       functions.CvxFusionDeviceCreate = [](int32_t count, const int32_t* children, int32_t* number) {
         for (int i = 0; i < 5; ++i) usleep(3000), good.objects->DeviceCtrl_setBoardId(device, id);
         return good.functions->CvxFusionDeviceCreate(count, children, number);
       };
     }},
    {"writes all back", setText<[](auto*, int32_t count, auto* text) {
       Board board = readBoard();
       if (textFrom(count, text).empty() || 63 < textFrom(count, text).size()) return ErrorNotOffered;
       board.description[textFrom(count, text).copy(board.description, 63)] = 0;
       return usleep(1000), changeBoard([&](Board& saved) { saved = board; });
     }>},
    {"next process", [](auto& table) {
       table.DeviceCtrl_getBoardId = [](auto*) { return forgottenId; };
       table.DeviceCtrl_setBoardId = [](auto*, int32_t id) {
         return id < 0 ? ErrorNotOffered : (forgottenId = id, Success);
       };
     }},
};

}  // namespace

const LibraryTable* CvxQuellisLibInitialize() {
  static ObjectTable objects = *good.objects;
  static const LibraryTable tables = {.functions = &functions, .objects = &objects};
  Faults.at(fault())(objects);
  return &tables;
}
