// The objects behind the handles. All of them live until the library unloads, so that a handle that was disposed of is
// known for what it is, and so that a leak checker sees the leaks of the tool alone. A handle is no address: it counts
// the objects, so that any other handle can be told apart.
#pragma once

#include <velq/types.h>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "simulator/model/simulation.h"

namespace simulator {

/// Base of all objects. An object is alive until it, or the one that it was asked of, is disposed of.
struct Object {
  explicit Object(Object* asked = nullptr) : owner(asked) {}
  virtual ~Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  bool isAlive() const { return !disposed && (owner == nullptr || owner->isAlive()); }

  Object* const owner;  ///< null for what a tool created
  bool disposed = false;
  uintptr_t ordinal = 0;  ///< counted from 1 in the order of making; 0 only until the object is kept
};

/// The handle of an object, null for null.
template <typename Handle>
Handle* handleOf(const Object* object) {
  return object == nullptr ? nullptr : reinterpret_cast<Handle*>(object->ordinal);
}

/// An array of whatever kind.
struct ArrayObject : Object {
  using Object::Object;
  virtual size_t size() const = 0;
  virtual void* at(size_t index) const = 0;  ///< the address of an element, 0 <= index < size()
};

/// An array of handles.
struct HandleArrayObject : ArrayObject {
  HandleArrayObject(Object* asked, std::vector<Object*> list) : ArrayObject(asked), items(std::move(list)) {}
  size_t size() const override { return items.size(); }
  void* at(size_t index) const override { return handleOf<void>(items[index]); }
  const std::vector<Object*> items;
};

struct DeviceObject : Object {
  DeviceObject(Object* asked, int32_t deviceNumber) : Object(asked), number(deviceNumber) {}
  const int32_t number;
};

/// A control of either kind. What is asked of it stays the bound device's, also when another one is bound.
struct ControlObject : Object {
  explicit ControlObject(Automation::Velq::Scenario kind) : scenario(kind) {}
  const Automation::Velq::Scenario scenario;
  Automation::Velq::AccessMode mode = Automation::Velq::AccessDevice;
  DeviceObject* device = nullptr;
  HandleArrayObject* items = nullptr;  ///< chips or solutions
  std::set<int32_t> holds;             ///< devices held against other processes until the control is disposed of
};

struct ChipObject : Object {
  ChipObject(ControlObject* asked, const Chip& given, size_t position)
      : Object(asked), control(*asked), device(*asked->device), chip(given), index(position) {}
  ControlObject& control;
  const DeviceObject& device;
  const Chip& chip;
  const size_t index;
  std::optional<uint16_t> loadedVersion;
  bool noticeConfirmed = false;
  bool started = false;
  bool finished = false;
  size_t polls = 0;
};

struct SolutionObject : Object {
  SolutionObject(ControlObject* asked, const Solution& given, size_t position)
      : Object(asked), control(*asked), device(*asked->device), solution(given), index(position) {}
  ControlObject& control;
  const DeviceObject& device;
  const Solution& solution;
  const size_t index;
  HandleArrayObject* sections = nullptr;
  std::vector<StateChange> newCodes;  ///< worked out or restored, not yet in use
  bool backupPrepared = false;        ///< by step 0
};

struct SectionObject : Object {
  SectionObject(SolutionObject* asked, const Section& given, size_t position)
      : Object(asked), solution(*asked), section(given), index(position) {}
  SolutionObject& solution;
  const Section& section;
  const size_t index;
  HandleArrayObject* items = nullptr;
  bool started = false;
};

struct ItemObject : Object {
  ItemObject(SectionObject* asked, const AdjustingCode& given, size_t position)
      : Object(asked), section(*asked), code(given), index(position) {}
  SectionObject& section;
  const AdjustingCode& code;
  const size_t index;
  size_t polls = 0;
};

/// Takes over `object` and returns it.
Object* keep(std::unique_ptr<Object> object);

template <typename Kind, typename... Arguments>
Kind* make(Arguments&&... arguments) {
  return static_cast<Kind*>(keep(std::make_unique<Kind>(std::forward<Arguments>(arguments)...)));
}

/// The object that `handle` stands for. Null when it is none of this library's.
Object* findObject(const void* handle);

/// One line on standard error, then abort().
[[noreturn]] void failHandle(const char* operation, const char* problem);

/// The live object of the wanted kind behind a handle; aborts with one line that names `operation` for any other
/// handle.
template <typename Kind>
Kind& resolve(const void* handle, const char* operation) {
  Object* const object = findObject(handle);
  if (object == nullptr) failHandle(operation, handle == nullptr ? "null handle" : "foreign handle");
  if (!object->isAlive()) failHandle(operation, "handle that was disposed of");
  auto* const wanted = dynamic_cast<Kind*>(object);
  if (wanted == nullptr) failHandle(operation, "handle of the wrong kind");
  return *wanted;
}

}  // namespace simulator
