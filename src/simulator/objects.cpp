#include "simulator/objects.h"

#include <cstdio>
#include <cstdlib>
#include <unordered_map>

namespace simulator {

namespace {

std::unordered_map<const void*, std::unique_ptr<Object>>& allObjects() {
  static std::unordered_map<const void*, std::unique_ptr<Object>> objects;
  return objects;
}

}  // namespace

Object* keep(std::unique_ptr<Object> object) {
  Object* const kept = object.get();
  allObjects().emplace(kept, std::move(object));
  return kept;
}

Object* findObject(const void* handle) {
  const auto found = allObjects().find(handle);
  return found == allObjects().end() ? nullptr : found->second.get();
}

void failHandle(const char* operation, const char* problem) {
  fprintf(stderr, "velq-sim: %s: %s\n", operation, problem);
  std::abort();
}

}  // namespace simulator
