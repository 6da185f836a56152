#include "qutil/console.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>

int getch() {
  std::fflush(stdout);
  termios original;
  if (tcgetattr(STDIN_FILENO, &original) != 0) return -1;
  termios raw = original;
  cfmakeraw(&raw);
  if (tcsetattr(STDIN_FILENO, TCSANOW, &raw) != 0) return -1;
  // Through the stream, not read(2): the line end after an answer must count as the next key.
  const int key = std::fgetc(stdin);
  if (tcsetattr(STDIN_FILENO, TCSANOW, &original) != 0) return -1;
  return key;
}

int readAnswer() {
  std::fflush(stdout);
  return std::getc(stdin);
}

void pauseSeconds(unsigned seconds) {
  std::fflush(stdout);
  sleep(seconds);
}
