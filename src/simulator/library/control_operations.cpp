#include "simulator/library/objects.h"
#include "simulator/library/operations.h"
#include "simulator/library/strings.h"

namespace simulator {

using namespace Automation::Velq;

DaqCtrlBase* DaqCtrlBase_Create(Scenario scenario) {
  if (scenario != ScenarioFirmware && scenario != ScenarioCalibration) return nullptr;
  return handleOf<DaqCtrlBase>(make<ControlObject>(scenario));
}

ErrorCode DaqCtrlBase_setSelectedDevice(DaqCtrlBase* control, const DeviceInformation* device) {
  ControlObject& object = resolve<ControlObject>(control, __func__);
  const std::optional<int32_t> number = Simulation::instance().select(device->DeviceNumber, device->Description);
  // A failed selection leaves the control unbound, so that no tool goes on with the device before.
  object.device = number ? make<DeviceObject>(&object, *number) : nullptr;
  // Chips and solutions obtained before stay those of their device; the next list is of the new one.
  object.items = nullptr;
  object.mode = device->OpenMode;
  return number ? Success : ErrorNoSuchDevice;
}

ErrorCode DaqCtrlBase_getSelectedDevice(DaqCtrlBase* control, DeviceInformation* device) {
  const ControlObject& object = resolve<ControlObject>(control, __func__);
  if (object.device == nullptr) return ErrorWrongOrder;
  const std::string& description = Simulation::instance().description(object.device->number);
  device->DeviceNumber = object.device->number;
  device->OpenMode = object.mode;
  device->ModuleIndex = 0;
  return fill(description, DescriptionCapacity, device->Description);
}

DeviceCtrl* DaqCtrlBase_getDevice(DaqCtrlBase* control) {
  return handleOf<DeviceCtrl>(resolve<ControlObject>(control, __func__).device);
}

void DaqCtrlBase_dispose(DaqCtrlBase* control) {
  ControlObject& object = resolve<ControlObject>(control, __func__);
  object.releaseAll();
  // Enough for the objects obtained from it, too: each is alive only as long as its parent.
  object.disposed = true;
}

}  // namespace simulator
