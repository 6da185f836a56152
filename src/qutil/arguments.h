// The command line's first four arguments, as every part of the tool reads them.
#pragma once

#include <string>

/// Each is empty when absent. With more than four arguments all are empty, so that such a call matches nothing.
struct Arguments {
  Arguments(int argc, char** argv) {
    if (argc > 5) return;
    std::string* const fields[] = {&selector, &option, &third, &fourth};
    for (int i = 1; i < argc; ++i) *fields[i - 1] = argv[i];
  }

  std::string selector;  ///< holds "/dn:" or "/dd:" and what follows
  std::string option;
  std::string third;
  std::string fourth;
};

/// What stands behind the first ':' of `argument`; all of it when there is none.
inline std::string afterColon(const std::string& argument) { return argument.substr(argument.find(':') + 1); }

/// True when `text` stands anywhere in `argument`.
inline bool holds(const std::string& argument, const char* text) { return argument.find(text) != std::string::npos; }
