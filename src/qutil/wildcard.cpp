#include "qutil/wildcard.h"

void MyReplace(std::string source, std::string pattern, std::string& output) {
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '?') {
      if (i < source.size()) output += source[i];
    } else if (pattern[i] == '*') {
      if (i < source.size()) output.append(source, i);
      // What is behind the first "*" is a suffix, and no part of the old description is left for wildcards in it.
      std::string rest = pattern.substr(i + 1);
      RemoveChar(rest, '*');
      RemoveChar(rest, '?');
      output += rest;
      return;
    } else {
      output += pattern[i];
    }
  }
}

void RemoveChar(std::string& text, char character) { std::erase(text, character); }
