#include "simulator/library/objects.h"

#include <cstdio>
#include <cstdlib>
#include <deque>

namespace simulator {

namespace {

// By ordinal - 1. Objects are never removed, so that the ordinal of one that was disposed of is not used again.
std::deque<std::unique_ptr<Object>>& allObjects() {
  static std::deque<std::unique_ptr<Object>> objects;
  return objects;
}

}  // namespace

Object* store(std::unique_ptr<Object> object) {
  allObjects().push_back(std::move(object));
  Object* const stored = allObjects().back().get();
  stored->ordinal = allObjects().size();
  return stored;
}

ErrorCode ControlObject::hold(int32_t number) {
  // Once for all sections and chips of this control.
  if (heldDevices_.contains(number)) return Automation::Velq::Success;
  const ErrorCode status = Simulation::instance().hold(number);
  if (status == Automation::Velq::Success) heldDevices_.insert(number);
  return status;
}

void ControlObject::releaseAll() {
  for (const int32_t number : heldDevices_) Simulation::instance().release(number);
  heldDevices_.clear();
}

// Ends the process: a wrong handle is a fault of the tool, and a real library could corrupt its memory.
void failHandle(const char* operation, const char* problem) {
  fprintf(stderr, "velq-sim: %s: %s\n", operation, problem);
  std::abort();
}

Object& liveObject(const void* handle, const char* operation) {
  const auto ordinal = reinterpret_cast<uintptr_t>(handle);
  if (ordinal == 0) failHandle(operation, "null handle");
  if (ordinal > allObjects().size()) failHandle(operation, "foreign handle");
  Object& object = *allObjects()[ordinal - 1];
  if (!object.isAlive()) failHandle(operation, "handle that was disposed of");
  return object;
}

}  // namespace simulator
