#include <dlfcn.h>
#include <fcntl.h>
#include <stdio_ext.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

// Replaces the tool's waits. A sleep is recorded in the trace, between the calls before and after it, and returns at
// once. A wait with output still in the buffer, which an operator could not read, is recorded, too: the harness then
// fails the test.

namespace {

void record(const char* format, size_t value) {
  const char* const path = std::getenv("VELQ_TRACE");
  if (path == nullptr) return;
  const int trace = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
  dprintf(trace, format, value);
  close(trace);
}

void checkFlushed() {
  const size_t pending = __fpending(stdout);
  if (pending > 0) record("unflushed: %zu bytes\n", pending);
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) unsigned sleep(unsigned seconds) {
  checkFlushed();
  record("sleep(%zu)\n", seconds);
  return 0;
}

__attribute__((visibility("default"))) int tcgetattr(int terminal, termios* settings) noexcept {
  checkFlushed();
  return reinterpret_cast<decltype(&tcgetattr)>(dlsym(RTLD_NEXT, "tcgetattr"))(terminal, settings);
}

__attribute__((visibility("default"))) int getc(FILE* stream) {
  checkFlushed();
  return reinterpret_cast<decltype(&getc)>(dlsym(RTLD_NEXT, "getc"))(stream);
}
}
