#include "simulator/library/strings.h"

#include <functional>
#include <map>
#include <string>

#include "text/utf8.h"

namespace simulator {

const wchar_t* internedWide(std::string_view text) {
  // A changed string is another entry, and a map never moves entries: strings returned before stay as they are.
  static std::map<std::string, std::wstring, std::less<>> strings;
  const auto known = strings.find(text);
  return (known != strings.end() ? known : strings.emplace(text, text::fromUtf8(text)).first)->second.c_str();
}

ErrorCode fill(std::string_view text, int32_t capacity, wchar_t* buffer) {
  if (capacity <= 0) return ErrorRefused;
  const std::wstring wide = text::fromUtf8(text);
  const size_t copied = wide.copy(buffer, static_cast<size_t>(capacity) - 1);
  buffer[copied] = 0;
  return copied == wide.size() ? Automation::Velq::Success : WarningTextCut;
}

}  // namespace simulator
