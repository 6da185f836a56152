#include "simulator/library/objects.h"

#include <cstdio>
#include <cstdlib>
#include <deque>

namespace simulator {

namespace {

std::deque<std::unique_ptr<Object>>& allObjects() {
  static std::deque<std::unique_ptr<Object>> objects;
  return objects;
}

}  // namespace

Object* keep(std::unique_ptr<Object> object) {
  allObjects().push_back(std::move(object));
  Object* const kept = allObjects().back().get();
  kept->ordinal = allObjects().size();
  return kept;
}

Object* findObject(const void* handle) {
  const auto ordinal = reinterpret_cast<uintptr_t>(handle);
  return ordinal != 0 && ordinal <= allObjects().size() ? allObjects()[ordinal - 1].get() : nullptr;
}

void failHandle(const char* operation, const char* problem) {
  fprintf(stderr, "velq-sim: %s: %s\n", operation, problem);
  std::abort();
}

}  // namespace simulator
