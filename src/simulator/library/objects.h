// The objects behind the handles. All of them live until the library unloads, so that a handle that was disposed of is
// recognised, and so that a leak checker sees the leaks of the tool alone. A handle is no address: it is the ordinal
// number of its object, so that a foreign handle is recognised, too.
#pragma once

#include <velq/types.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "simulator/model/simulation.h"

namespace simulator {

/// Base of all objects. An object is alive until it, or the one that it was obtained from, is disposed of.
struct Object {
  explicit Object(Object* from = nullptr) : parent(from) {}
  virtual ~Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  bool isAlive() const { return !disposed && (parent == nullptr || parent->isAlive()); }

  Object* const parent;  ///< the object that it was obtained from; null for one that a tool created
  bool disposed = false;
  uintptr_t ordinal = 0;  ///< in the order of creation, from 1; 0 only until the object is stored
};

/// Takes over `object` and returns it.
Object* store(std::unique_ptr<Object> object);

template <typename Kind, typename... Arguments>
Kind* make(Arguments&&... arguments) {
  return static_cast<Kind*>(store(std::make_unique<Kind>(std::forward<Arguments>(arguments)...)));
}

/// The handle of an object, null for null.
template <typename Handle>
Handle* handleOf(const Object* object) {
  return object == nullptr ? nullptr : reinterpret_cast<Handle*>(object->ordinal);
}

/// An array.
struct ArrayObject : Object {
  using Object::Object;
  std::vector<void*> elements;  ///< handles, or the addresses of values; complete before a tool gets the array
};

/// The array of one object of `Kind` for each element of `list`, which `parent` returns. It is created once and stored
/// in `array`.
template <typename Kind, typename Parent, typename Element>
Automation::Velq::Array* handleArray(Parent& parent, ArrayObject*& array, const std::vector<Element>& list) {
  if (array == nullptr) {
    array = make<ArrayObject>(&parent);
    for (size_t i = 0; i < list.size(); ++i) array->elements.push_back(handleOf<void>(make<Kind>(&parent, list[i], i)));
  }
  return handleOf<Automation::Velq::Array>(array);
}

/// A device: an open one, or the one that a control is bound to.
struct DeviceObject : Object {
  DeviceObject(Object* from, int32_t deviceNumber) : Object(from), number(deviceNumber) {}
  const int32_t number;
};

/// A control of either kind. Objects obtained from it stay those of the device that was bound then.
struct ControlObject : Object {
  explicit ControlObject(Automation::Velq::Scenario kind) : scenario(kind) {}

  /// Holds a device against other processes until `releaseAll`. Returns as Simulation::hold.
  ErrorCode hold(int32_t number);

  /// Reverts every `hold`.
  void releaseAll();

  const Automation::Velq::Scenario scenario;
  Automation::Velq::AccessMode mode = Automation::Velq::AccessDevice;
  DeviceObject* device = nullptr;  ///< null until one is bound
  ArrayObject* items = nullptr;    ///< chips or solutions of `device`; null until they are read

 private:
  std::set<int32_t> heldDevices_;
};

/// An element of a list in the rig, whose array `Owner` returned.
template <typename Owner, typename Element>
struct ElementObject : Object {
  ElementObject(Owner* from, const Element& element, size_t position)
      : Object(from), owner(*from), inRig(element), index(position) {}
  Owner& owner;
  const Element& inRig;
  const size_t index;  ///< in the list
};

/// A chip, and how far an overwrite of it has come: notice confirmed, file loaded, started, polled, finished.
struct ChipObject : ElementObject<ControlObject, Chip> {
  using ElementObject::ElementObject;
  const DeviceObject& device = *owner.device;
  std::optional<uint16_t> loadedVersion;  ///< of the file; nothing until one is loaded
  bool noticeConfirmed = false;
  std::optional<size_t> polls;  ///< since the start; nothing until it is started
  bool finished = false;        ///< the new version is saved
};

/// A calibration solution, and the codes that its sections produced.
struct SolutionObject : ElementObject<ControlObject, Solution> {
  using ElementObject::ElementObject;
  const DeviceObject& device = *owner.device;
  ArrayObject* sections = nullptr;
  std::map<Item, uint32_t> newCodes;  ///< calibrated or restored, not yet in use
  bool backupPrepared = false;        ///< by step 0
};

/// A section of a solution.
struct SectionObject : ElementObject<SolutionObject, Section> {
  using ElementObject::ElementObject;
  ArrayObject* items = nullptr;
  bool started = false;
};

/// A calibration item of a section.
struct ItemObject : ElementObject<SectionObject, AdjustingCode> {
  using ElementObject::ElementObject;
  size_t polls = 0;  ///< since the section was started
};

/// One line on standard error, then abort().
[[noreturn]] void failHandle(const char* operation, const char* problem);

/// The live object behind a handle; aborts with one line that names `operation` for any other handle.
Object& liveObject(const void* handle, const char* operation);

/// The same, of the wanted kind.
template <typename Kind>
Kind& resolve(const void* handle, const char* operation) {
  auto* const wanted = dynamic_cast<Kind*>(&liveObject(handle, operation));
  if (wanted == nullptr) failHandle(operation, "handle of the wrong kind");
  return *wanted;
}

/// The chips or solutions of the device that a control of the wanted kind is bound to; null when there are none.
template <typename Kind, typename Element>
Automation::Velq::Array* controlItems(const void* handle, const char* operation, Automation::Velq::Scenario wanted,
                                      std::optional<std::vector<Element>> Device::*elements) {
  ControlObject& control = resolve<ControlObject>(handle, operation);
  // A tool can cast a control of either kind to the other's type.
  if (control.scenario != wanted) failHandle(operation, "handle of the wrong kind");
  if (control.device == nullptr) return nullptr;
  const Device* const device = Simulation::instance().rigDevice(control.device->number);
  if (device == nullptr || !(device->*elements)) return nullptr;
  return handleArray<Kind>(control, control.items, *(device->*elements));
}

}  // namespace simulator
