#include "velq_sim/capture.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "base/descriptor.h"
#include "simulator/rig/rig_writer.h"
#include "velq_sim/failure.h"
#include "velq_sim/installed_rig.h"

namespace velq_sim {

namespace {

[[noreturn]] void fail(const std::string& path, int problem) {
  const char* const reason = problem == EEXIST ? "already exists" : std::strerror(problem);
  throw Failure(Failed, path + ": " + reason + "; nothing was written");
}

// Linked to its name once it is whole: link(2) fails where the name is taken, rename(2) would replace that file.
void writeNew(const std::string& path, const std::string& text) {
  const std::string temporary = path + "." + std::to_string(getpid());
  // The umask decides who can read it, unlike a state: rigs are for sharing.
  const base::Descriptor file(temporary, O_CREAT | O_EXCL | O_WRONLY, 0666);
  if (!file.isOpen()) fail(errno == EEXIST ? temporary : path, errno);
  const bool isWritten = file.write(text) && fsync(file.number()) == 0 && link(temporary.c_str(), path.c_str()) == 0;
  const int problem = errno;
  unlink(temporary.c_str());
  if (!isWritten) fail(path, problem);
}

std::string capturedText() {
  const std::string text = simulator::textOf(readInstalledRig());
  // What is read can be a rig in each part but not as a whole, for example longer than a rig may be.
  try {
    simulator::readRig(text);
  } catch (const simulator::RigError& error) {
    throw Failure(Failed, std::string("the captured devices are not a valid rig: ") + error.what());
  }
  return text;
}

}  // namespace

void capture(const std::string& file) {
  const bool isFile = file != "-";
  // Ahead of the work, which may take long. The link decides.
  if (isFile && access(file.c_str(), F_OK) == 0) fail(file, EEXIST);
  const std::string text = capturedText();
  // A file that grows beyond the limit of the user is an error like others, not the end of the process.
  std::signal(SIGXFSZ, SIG_IGN);
  if (isFile)
    writeNew(file, text);
  else
    std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace velq_sim
