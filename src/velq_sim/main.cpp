// Runs a command on the simulator.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "simulator/rig/rig.h"
#include "text/one_line.h"
#include "velq_sim/capture.h"
#include "velq_sim/changes.h"
#include "velq_sim/failure.h"
#include "velq_sim/launch.h"
#include "velq_sim/options.h"
#include "velq_sim/reset.h"

using namespace velq_sim;

namespace {

simulator::Rig readRig(const std::string& path) {
  try {
    return simulator::readRigFile(path);
  } catch (const simulator::RigError& error) {
    throw Failure(Failed, path + ": " + error.what());
  }
}

// Returns the exit status.
int perform(const Request& request) {
  if (!request.check.empty()) {
    printf("%s: good, number of devices: %zu\n", request.check.c_str(), readRig(request.check).devices.size());
  } else if (!request.capture.empty()) {
    capture(request.capture);
  } else {
    // Ahead of the command, which would go on without devices.
    if (!request.rig.empty()) readRig(request.rig);
    // Ahead of the rest, which finds rig and state in the environment, as the simulator does in a command.
    exportRequest(request);
    if (request.reset) resetState();
    if (request.changes) return showChanges() ? 0 : Failed;
    if (*request.command != nullptr) launch(request.command);
  }
  return 0;
}

ExitStatus refuse(const char* problem, ExitStatus status) {
  fprintf(stderr, "velq-sim: %s\n", text::oneLine(problem).c_str());
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::optional<Request> request = parse(argc, argv);
    const int status = request ? perform(*request) : 0;
    // Output is buffered, so that a full disk may be noticed no earlier than here.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
      throw Failure(Failed, std::string("standard output: ") + std::strerror(errno));
    return status;
  } catch (const Failure& failure) {
    return refuse(failure.what(), failure.status());
  } catch (const std::exception& error) {
    return refuse(error.what(), Failed);
  }
}
