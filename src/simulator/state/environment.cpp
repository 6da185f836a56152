#include "simulator/state/environment.h"

#include <cinttypes>
#include <cstdio>
#include <filesystem>

#include "base/environment.h"

namespace simulator {

namespace {

bool isAbsolute(const std::string& path) { return path.starts_with('/'); }

// FNV-1a: a library that is built elsewhere has to find the same file.
uint64_t hash(const std::string& bytes) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return hash;
}

// A whole path can be longer than a file's name may be.
std::string stateName(const std::string& rigPath) {
  constexpr int MostOfName = 100;
  const std::filesystem::path path = std::filesystem::absolute(rigPath);
  std::error_code error;
  // A rig that does not exist has a place, too: its state can be reset.
  const std::filesystem::path found = std::filesystem::weakly_canonical(path, error);
  const std::filesystem::path& resolved = error ? path : found;
  char name[MostOfName + 20];
  snprintf(name, sizeof name, "%.*s-%016" PRIx64, MostOfName, resolved.filename().c_str(), hash(resolved));
  return name;
}

}  // namespace

std::string rigPathFromEnvironment() { return base::environment("VELQ_RIG"); }

StatePlace statePlaceFromEnvironment() {
  const std::string named = base::environment("VELQ_STATE");
  if (!named.empty()) return {named, false};
  const std::string home = base::environment("HOME");
  std::string directory = base::environment("XDG_STATE_HOME");
  // A relative one would be another directory for each working directory.
  if (!isAbsolute(directory)) directory = isAbsolute(home) ? home + "/.local/state" : "";
  if (directory.empty()) return {"", true};
  const std::string rig = rigPathFromEnvironment();
  return {directory + "/velq-sim/" + (rig.empty() ? "state" : stateName(rig)), true};
}

}  // namespace simulator
