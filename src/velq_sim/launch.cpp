#include "velq_sim/launch.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "base/environment.h"
#include "velq_sim/failure.h"

namespace velq_sim {

namespace {

namespace fs = std::filesystem;

void setVariable(const char* name, const std::string& value) {
  if (setenv(name, value.c_str(), 1) != 0) throw Failure(Failed, std::string(name) + ": " + std::strerror(errno));
}

void exportText(const char* name, const std::string& value) {
  if (!value.empty()) setVariable(name, value);
}

void exportPath(const char* name, const std::string& path) {
  if (!path.empty()) setVariable(name, fs::absolute(path));
}

// Before the other entries of a list of the dynamic linker, or of PATH.
void putFirst(const char* name, const std::string& entry) {
  const std::string others = base::environment(name);
  // Without others no colon either: both lists take an empty entry for the working directory.
  setVariable(name, others.empty() ? entry : entry + ":" + others);
}

// Not by argv[0]: the caller chooses it, and through a symbolic link it has no libraries beside it.
fs::path programDirectory() { return fs::read_symlink("/proc/self/exe").parent_path(); }

// Without this check a command would go on with the library of the system, and so with real hardware.
void require(const fs::path& library) {
  if (access(library.c_str(), R_OK) != 0) throw Failure(Failed, library.string() + ": " + std::strerror(errno));
}

void putLibrariesFirst() {
  const fs::path directory = (programDirectory() / LIBRARIES_FROM_PROGRAM).lexically_normal();
  if (directory.string().find_first_of(":;") != std::string::npos)
    throw Failure(Failed,
                  directory.string() + ": the dynamic linker cannot search a directory with ':' or ';' in its name");
  require(directory / SIMULATOR_LIBRARY);
  putFirst("LD_LIBRARY_PATH", directory);
  if (base::environment("VELQ_TRACE").empty() && base::environment("VELQ_FAULTS").empty()) return;
  require(directory / PROBE_LIBRARY);
  // By its bare name, found through LD_LIBRARY_PATH: LD_PRELOAD has no way to write a space in a path.
  putFirst("LD_PRELOAD", PROBE_LIBRARY);
}

// Scripts, too, find the qutil of a build tree. If PATH contains the directory, its order is the user's choice.
void putProgramsFirst() {
  const std::string directory = programDirectory();
  if ((":" + base::environment("PATH") + ":").find(":" + directory + ":") == std::string::npos)
    putFirst("PATH", directory);
}

}  // namespace

void exportRequest(const Request& request) {
  exportPath("VELQ_RIG", request.rig);
  exportPath("VELQ_STATE", request.state);
  exportPath("VELQ_TRACE", request.trace);
  exportText("VELQ_FAULTS", request.faults);
}

void launch(char** command) {
  putLibrariesFirst();
  putProgramsFirst();
  // It searches the PATH that was set above.
  execvp(*command, command);
  throw Failure(errno == ENOENT ? NotFound : CannotRun, std::string(*command) + ": " + std::strerror(errno));
}

}  // namespace velq_sim
