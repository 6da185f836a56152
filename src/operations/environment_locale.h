// The locale in which descriptions pass between wide and narrow text.
#pragma once

#include <clocale>

/// The environment's locale for as long as this object lives; "C" afterwards, whatever was set before.
class EnvironmentLocale {
 public:
  EnvironmentLocale() { std::setlocale(LC_ALL, ""); }
  ~EnvironmentLocale() { std::setlocale(LC_ALL, "C"); }
  EnvironmentLocale(const EnvironmentLocale&) = delete;
  EnvironmentLocale& operator=(const EnvironmentLocale&) = delete;
};
