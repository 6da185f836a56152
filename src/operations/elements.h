// Lists of the library's objects.
#pragma once

#include <velq/velq.h>

/// An array of handles. It reads the length once, and an element at every use: the order of library calls is frozen.
template <typename Object>
class Elements {
 public:
  /// A null array is an empty list.
  explicit Elements(Automation::Velq::Array* array)
      : array_(array), length_(array == nullptr ? 0 : Automation::Velq::Array_getLength(array)) {}

  /// May be negative where a library says so.
  int32_t length() const { return length_; }

  Object* operator[](int32_t index) const {
    return static_cast<Object*>(Automation::Velq::Array_getItem(array_, index));
  }

 private:
  Automation::Velq::Array* array_;
  int32_t length_;
};
