#include "velq_sim/reset.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include "simulator/state/environment.h"
#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

[[noreturn]] void failWithErrno(const std::string& path, const char* what) {
  throw Failure(Failed, path + ": " + what + ": " + std::strerror(errno) + simulator::StateError::Advice);
}

// A mistyped --state must not cost a file of another kind. Only the beginning is looked at: a state that is damaged
// further on is what a reset is for. A state that a command created without saving a change is empty.
bool isState(const std::string& path) {
  // Where the header of an SQLite database has its application id.
  constexpr size_t IdOffset = 68;
  char header[IdOffset + 4] = {};
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) failWithErrno(path, "cannot be opened");
  file.read(header, sizeof header);
  if (file.gcount() == 0) return true;
  return std::string_view(header).starts_with("SQLite format 3") && std::string_view(&header[IdOffset], 4) == "VELQ";
}

}  // namespace

void resetState() {
  const simulator::StateFile file(simulator::statePlaceFromEnvironment());
  const std::string& path = file.path();
  if (path.empty()) throw Failure(Failed, "--reset: VELQ_STATE, XDG_STATE_HOME and HOME name no state");
  try {
    if (!file.exists()) return;
  } catch (const simulator::StateError& error) {
    throw Failure(Failed, path + ": " + error.what());
  }
  if (!isState(path)) throw Failure(Failed, path + ": is not a state of the simulator, so it is not deleted");
  if (unlink(path.c_str()) != 0) failWithErrno(path, "cannot be deleted");
  // A killed command may have left it. SQLite must not apply it to the next state. Not deleted first: without its
  // journal the state could be half changed if this process is killed in between.
  unlink((path + "-journal").c_str());
}

}  // namespace velq_sim
