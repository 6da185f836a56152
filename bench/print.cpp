// Prints its argument: the least that a program in C++ can do.
#include <iostream>

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  std::cout << argv[1];
  return 0;
}
