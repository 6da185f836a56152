#include <iterator>

#include "simulator/library/objects.h"
#include "simulator/library/operations.h"
#include "simulator/library/strings.h"

namespace simulator {

namespace {

ControlObject& resolveControl(const DaqCtrlBase* control, const char* operation) {
  return resolve<ControlObject>(control, operation);
}

}  // namespace

DaqCtrlBase* DaqCtrlBase_Create(Scenario scenario) {
  if (scenario != ScenarioFirmware && scenario != ScenarioCalibration) return nullptr;
  return handleOf<DaqCtrlBase>(make<ControlObject>(scenario));
}

ErrorCode DaqCtrlBase_setSelectedDevice(DaqCtrlBase* control, const DeviceInformation* device) {
  ControlObject& object = resolveControl(control, __func__);
  const std::optional<int32_t> number = Simulation::instance().select(device->DeviceNumber, device->Description);
  object.device = number ? make<DeviceObject>(&object, *number) : nullptr;
  object.items = nullptr;
  object.mode = device->OpenMode;
  return number ? Success : ErrorNoSuchDevice;
}

ErrorCode DaqCtrlBase_getSelectedDevice(DaqCtrlBase* control, DeviceInformation* device) {
  const ControlObject& object = resolveControl(control, __func__);
  if (object.device == nullptr) return ErrorWrongOrder;
  const std::string& description = Simulation::instance().description(object.device->number);
  device->DeviceNumber = object.device->number;
  device->OpenMode = object.mode;
  device->ModuleIndex = 0;
  constexpr int32_t capacity = std::size(decltype(device->Description){});
  return fill(description, capacity, device->Description);
}

DeviceCtrl* DaqCtrlBase_getDevice(DaqCtrlBase* control) {
  return handleOf<DeviceCtrl>(resolveControl(control, __func__).device);
}

void DaqCtrlBase_dispose(DaqCtrlBase* control) {
  ControlObject& object = resolveControl(control, __func__);
  for (const int32_t number : object.holds) Simulation::instance().release(number);
  object.holds.clear();
  object.disposed = true;
}

}  // namespace simulator
