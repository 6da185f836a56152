#include <cstddef>
#include <cwchar>

#include "simulator/library/objects.h"
#include "simulator/library/operations.h"
#include "simulator/library/strings.h"
#include "text/utf8.h"

namespace simulator {

using namespace Automation::Velq;

namespace {

constexpr const char* LibraryVersion = "1.0-sim";

// The installed devices. A node is as long as its description, which can be longer in a rig than in the record.
struct NodeArrayObject : ArrayObject {
  explicit NodeArrayObject(const Simulation& simulation) {
    for (const int32_t number : simulation.numbers())
      nodes.push_back(std::wstring(HeaderWords, 0) + text::fromUtf8(simulation.description(number)));
    for (std::wstring& node : nodes) elements.push_back(node.data());
  }

  static constexpr size_t HeaderWords = offsetof(InstalledDeviceNode, Description) / sizeof(wchar_t);
  std::vector<std::wstring> nodes;
};

// An array of values of the rig, which live longer than every handle.
template <typename Value>
Array* valueArray(const DeviceCtrl* handle, const char* operation, std::optional<std::vector<Value>> Device::*values) {
  DeviceObject& device = resolve<DeviceObject>(handle, operation);
  const Device* const given = Simulation::instance().rigDevice(device.number);
  if (given == nullptr || !(given->*values)) return nullptr;
  auto* const array = make<ArrayObject>(&device);
  // The boundary has no const: tools only read.
  for (const Value& value : *(given->*values)) array->elements.push_back(const_cast<Value*>(&value));
  return handleOf<Array>(array);
}

ErrorCode fillOptional(const DeviceCtrl* handle, const char* operation, std::optional<std::string> Device::*text,
                       int32_t capacity, wchar_t* buffer) {
  const DeviceObject& device = resolve<DeviceObject>(handle, operation);
  const Device* const given = Simulation::instance().rigDevice(device.number);
  if (given == nullptr || !(given->*text)) return ErrorNotGiven;
  return fill(*(given->*text), capacity, buffer);
}

// Why the device cannot be changed now, or Success.
ErrorCode checkChangeable(Simulation& simulation, int32_t number) {
  return simulation.exists(number) ? simulation.checkFree(number) : ErrorNoSuchDevice;
}

}  // namespace

// Every mode opens every device. What may change it is decided with each change.
DeviceCtrl* DeviceCtrl_Create(int32_t deviceNumber, const wchar_t* description, AccessMode /*mode*/) {
  const std::optional<int32_t> number = Simulation::instance().select(deviceNumber, description);
  return number ? handleOf<DeviceCtrl>(make<DeviceObject>(nullptr, *number)) : nullptr;
}

Array* DeviceCtrl_getInstalledDevices() {
  Simulation& simulation = Simulation::instance();
  if (!simulation.hasRig()) return nullptr;
  simulation.refresh();
  // A new array each time: the ones before stay as they are when a device is renamed.
  return handleOf<Array>(make<NodeArrayObject>(simulation));
}

int32_t DeviceCtrl_getDeviceNumber(DeviceCtrl* device) { return resolve<DeviceObject>(device, __func__).number; }

ErrorCode DeviceCtrl_getDescription(DeviceCtrl* device, int32_t capacity, wchar_t* description) {
  const int32_t number = resolve<DeviceObject>(device, __func__).number;
  const Simulation& simulation = Simulation::instance();
  // Another process can have dissolved a fusion device that is open here.
  if (!simulation.exists(number)) return ErrorNoSuchDevice;
  return fill(simulation.description(number), capacity, description);
}

int32_t DeviceCtrl_getProductId(DeviceCtrl* device) {
  return Simulation::instance().productId(resolve<DeviceObject>(device, __func__).number);
}

int32_t DeviceCtrl_getBoardId(DeviceCtrl* device) {
  return Simulation::instance().boardId(resolve<DeviceObject>(device, __func__).number);
}

ErrorCode DeviceCtrl_getBoardVersion(DeviceCtrl* device, int32_t capacity, wchar_t* version) {
  return fillOptional(device, __func__, &Device::boardVersion, capacity, version);
}

ErrorCode DeviceCtrl_getDriverVersion(DeviceCtrl* device, int32_t capacity, wchar_t* version) {
  return fillOptional(device, __func__, &Device::driverVersion, capacity, version);
}

ErrorCode DeviceCtrl_getDllVersion(DeviceCtrl* device, int32_t capacity, wchar_t* version) {
  // The device does not matter, but a wrong handle is a fault of the tool here, too.
  resolve<DeviceObject>(device, __func__);
  return fill(LibraryVersion, capacity, version);
}

ErrorCode DeviceCtrl_getLocation(DeviceCtrl* device, int32_t capacity, wchar_t* location) {
  return fillOptional(device, __func__, &Device::location, capacity, location);
}

Array* DeviceCtrl_getBaseAddresses(DeviceCtrl* device) { return valueArray(device, __func__, &Device::baseAddresses); }

Array* DeviceCtrl_getInterrupts(DeviceCtrl* device) { return valueArray(device, __func__, &Device::interrupts); }

ErrorCode DeviceCtrl_setDescription(DeviceCtrl* device, int32_t count, const wchar_t* description) {
  const int32_t number = resolve<DeviceObject>(device, __func__).number;
  if (description == nullptr || count <= 0) return ErrorRefused;
  // The count may include the terminator.
  const std::wstring_view wide(description, wcsnlen(description, static_cast<size_t>(count)));
  const std::optional<std::string> text = text::toUtf8(wide);
  // No longer one: records would cut it, and no tool could open the device by it.
  if (!text || wide.empty() || wide.size() >= DescriptionCapacity) return ErrorRefused;
  Simulation& simulation = Simulation::instance();
  return simulation.change([&](std::vector<StateChange>& changes) {
    const ErrorCode status = checkChangeable(simulation, number);
    if (status != Success) return status;
    if (simulation.isUsedByAnother(*text, number)) return ErrorRefused;
    changes.push_back({number, DescriptionItem, *text});
    return Success;
  });
}

ErrorCode DeviceCtrl_setBoardId(DeviceCtrl* device, int32_t boardId) {
  const int32_t number = resolve<DeviceObject>(device, __func__).number;
  Simulation& simulation = Simulation::instance();
  const Device* const given = simulation.rigDevice(number);
  // A fusion device that a command created has no board.
  if (given == nullptr || boardId < 0 || boardId > given->highestBoardId) return ErrorRefused;
  return simulation.change([&](std::vector<StateChange>& changes) {
    const ErrorCode status = checkChangeable(simulation, number);
    if (status == Success) changes.push_back({number, BoardIdItem, boardId});
    return status;
  });
}

void DeviceCtrl_dispose(DeviceCtrl* device) {
  DeviceObject& object = resolve<DeviceObject>(device, __func__);
  // It ends with the control that it was obtained from.
  if (object.parent != nullptr) failHandle(__func__, "handle that belongs to its control");
  object.disposed = true;
}

int32_t Array_getLength(Array* array) {
  return static_cast<int32_t>(resolve<ArrayObject>(array, __func__).elements.size());
}

void* Array_getItem(Array* array, int32_t index) {
  const std::vector<void*>& elements = resolve<ArrayObject>(array, __func__).elements;
  // Null, and not what is behind the array, for a tool that ignores its length.
  return index >= 0 && std::cmp_less(index, elements.size()) ? elements[static_cast<size_t>(index)] : nullptr;
}

}  // namespace simulator
