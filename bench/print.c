// Prints its argument: the least that a program in C can do.
#include <locale.h>
#include <stdio.h>

int main(int argc, char** argv) {
#ifdef SET_LOCALE
  setlocale(LC_ALL, "");
#endif
  return argc == 2 && fputs(argv[1], stdout) >= 0 ? 0 : 1;
}
