// Processes that a library starts, in any session and process group.
#pragma once

#include <sys/types.h>

#include <chrono>

namespace compliance {

/// From now on a descendant whose parent ends becomes a child of this process.
void adoptOrphans();

/// Waits up to `grace` for all descendants of this process to end. Returns whether they have. As endDescendants(), it
/// needs adoptOrphans() before.
bool waitForDescendants(std::chrono::milliseconds grace);

/// Kills descendants until none is left.
void endDescendants();

/// Whether a process, also one that has ended but was not waited for, is a descendant of this one.
bool isDescendant(pid_t process);

}  // namespace compliance
