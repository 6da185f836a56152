// Strings that the library fills.
#pragma once

#include <velq/velq.h>

#include <array>
#include <stdexcept>
#include <string>

/// Room for `Capacity` characters, zero filled, and for one more: it ends even where a library leaves out the
/// terminator.
template <int32_t Capacity>
class TextBuffer {
 public:
  /// The capacity that is passed to a library, in characters.
  static constexpr int32_t capacity = Capacity;

  wchar_t* data() { return characters_.data(); }
  const wchar_t* data() const { return characters_.data(); }

 private:
  std::array<wchar_t, Capacity + 1> characters_{};
};

/// A description as most reports read it.
using LibraryText = TextBuffer<256>;

/// The device's description, empty when the library fills none; the status is not looked at.
inline LibraryText descriptionOf(Automation::Velq::DeviceCtrl* device) {
  LibraryText text;
  Automation::Velq::DeviceCtrl_getDescription(device, LibraryText::capacity, text.data());
  return text;
}

/// A name that the library returned. Throws std::logic_error for null, which ends the process.
inline std::wstring nameFrom(const wchar_t* name) {
  // As GNU's string does; others would read it.
  if (name == nullptr) throw std::logic_error("basic_string: construction from null is not valid");
  return name;
}
