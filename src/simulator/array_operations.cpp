#include "simulator/objects.h"
#include "simulator/operations.h"

namespace simulator {

int32_t Array_getLength(Array* array) { return static_cast<int32_t>(resolve<ArrayObject>(array, __func__).size()); }

void* Array_getItem(Array* array, int32_t index) {
  const ArrayObject& object = resolve<ArrayObject>(array, __func__);
  return index >= 0 && std::cmp_less(index, object.size()) ? object.at(static_cast<size_t>(index)) : nullptr;
}

}  // namespace simulator
