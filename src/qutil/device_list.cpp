#include "qutil/device_list.h"

#include <velq/velq.h>

#include <cstdio>
#include <optional>
#include <regex>

#include "base/conversion.h"

using namespace Automation::Velq;

namespace {

// The description of a node, which may be longer than the record has room for; null when the library gives no node.
const wchar_t* descriptionAt(Array* devices, int32_t index) {
  const auto* const node = static_cast<const char*>(Array_getItem(devices, index));
  if (node == nullptr) return nullptr;
  return reinterpret_cast<const wchar_t*>(node + offsetof(InstalledDeviceNode, Description));
}

std::string expressionOf(std::string pattern) {
  const size_t mark = pattern.find('?');
  const size_t star = pattern.find('*');
  if (mark != std::string::npos) pattern[mark] = '.';
  // Two characters go, not one: scripts have come to count on the character behind the "*" being ignored.
  if (star != std::string::npos) pattern.replace(star, 2, ".*");
  return pattern;
}

}  // namespace

int getAllInstalledDevice() {
  Array* const devices = DeviceCtrl_getInstalledDevices();
  if (devices == nullptr) return static_cast<int>(ErrorNoDeviceList);
  const int32_t count = Array_getLength(devices);
  if (count == 0) {
    printf("No Quellis device in system!(Errorlevel = %d)\n", 2);
    return 2;
  }
  puts("Quellis devices list in system:");
  const EnvironmentLocale locale;
  for (int32_t i = 0; i < count; ++i) {
    const wchar_t* const description = descriptionAt(devices, i);
    if (description == nullptr) break;
    printf("%d,%S\n", i, description);
  }
  return 0;
}

std::vector<std::string> getMatchedDevice(std::string pattern) {
  std::vector<std::string> matches;
  Array* const devices = DeviceCtrl_getInstalledDevices();
  if (devices == nullptr) return matches;
  const int32_t count = Array_getLength(devices);
  std::optional<std::regex> expression;
  for (int32_t i = 0; i < count; ++i) {
    const wchar_t* const wide = descriptionAt(devices, i);
    if (wide == nullptr) break;
    char description[256] = {};
    snprintf(description, sizeof description, "%S", wide);
    if (!expression) expression.emplace(expressionOf(pattern), std::regex::ECMAScript | std::regex::icase);
    if (std::regex_match(description, *expression)) matches.emplace_back(description);
  }
  return matches;
}
