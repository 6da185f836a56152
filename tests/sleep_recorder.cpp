#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

// Appends "sleep(N)" to the trace, where it stands between the calls that it waited between, and the moment's standard
// output length is left to the kernel: what was not flushed before is not there yet.
extern "C" __attribute__((visibility("default"))) unsigned sleep(unsigned seconds) {
  const char* const path = std::getenv("VELQ_TRACE");
  if (path == nullptr) return 0;
  const int trace = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
  dprintf(trace, "sleep(%u)\n", seconds);
  close(trace);
  return 0;
}
