// The command line's first four arguments, as every part of the tool reads them.
#pragma once

#include <string>

/// The arguments of main. Each string is empty when absent. With more than four arguments all are empty.
struct Arguments {
  Arguments(int argumentCount, char** argumentVector) : argc(argumentCount), argv(argumentVector) {
    // Quirk: more than four arguments are read as none.
    if (argc > 5) return;
    std::string* const fields[] = {&selector, &option, &third, &fourth};
    for (int i = 1; i < argc; ++i) *fields[i - 1] = argv[i];
  }

  const int argc;
  char** const argv;
  std::string selector;  ///< "/dn:Num" or "/dd:description"
  std::string option;
  std::string third;
  std::string fourth;
};

/// The part of `argument` after its first ':'; all of it when there is none.
inline std::string afterColon(const std::string& argument) { return argument.substr(argument.find(':') + 1); }

/// Whether `text` is anywhere in `argument`.
inline bool contains(const std::string& argument, const char* text) { return argument.find(text) != std::string::npos; }
