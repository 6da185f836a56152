#include "qutil/device_match.h"

#include <velq/velq.h>

#include <cstdio>
#include <optional>
#include <regex>

#include "qutil/installed_devices.h"

using namespace Automation::Velq;

namespace {

std::string expressionOf(std::string pattern) {
  const size_t mark = pattern.find('?');
  const size_t star = pattern.find('*');
  if (mark != std::string::npos) pattern[mark] = '.';
  // Quirk: replaces two characters, so the one after the "*" is ignored.
  if (star != std::string::npos) pattern.replace(star, 2, ".*");
  return pattern;
}

}  // namespace

std::vector<std::string> getMatchedDevice(std::string pattern) {
  std::vector<std::string> matches;
  Array* const devices = DeviceCtrl_getInstalledDevices();
  if (devices == nullptr) return matches;
  const int32_t count = Array_getLength(devices);
  // Compiled with the first device: where none is installed, a pattern that is no expression does no harm.
  std::optional<std::regex> expression;
  for (int32_t i = 0; i < count; ++i) {
    const wchar_t* const wide = installedDescription(devices, i);
    if (wide == nullptr) break;
    // Quirk: in the locale "C", so a description beyond ASCII is read in part or not at all.
    char description[256] = {};
    snprintf(description, sizeof description, "%S", wide);
    if (!expression) expression.emplace(expressionOf(pattern), std::regex::ECMAScript | std::regex::icase);
    if (std::regex_match(description, *expression)) matches.emplace_back(description);
  }
  return matches;
}
