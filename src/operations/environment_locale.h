// The locale in which descriptions are converted between wide and narrow strings.
#pragma once

#include <clocale>

/// The environment's locale for as long as this object lives; "C" afterwards, also if another was set before.
class EnvironmentLocale {
 public:
  EnvironmentLocale() { std::setlocale(LC_ALL, ""); }
  ~EnvironmentLocale() { std::setlocale(LC_ALL, "C"); }
  EnvironmentLocale(const EnvironmentLocale&) = delete;
  EnvironmentLocale& operator=(const EnvironmentLocale&) = delete;
};
