#include "simulator/objects.h"

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
  kept->ordinal = static_cast<uint32_t>(allObjects().size()) & INT32_MAX;
  return kept;
}

Object* findObject(const void* handle) {
  const auto bits = reinterpret_cast<uintptr_t>(handle);
  const bool known = bits != 0 && bits % HandleStep == 0 && bits / HandleStep <= allObjects().size();
  return known ? allObjects()[bits / HandleStep - 1].get() : nullptr;
}

void failHandle(const char* operation, const char* problem) {
  fprintf(stderr, "velq-sim: %s: %s\n", operation, problem);
  std::abort();
}

}  // namespace simulator
