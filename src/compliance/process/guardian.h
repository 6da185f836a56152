// The parent of the process in which a library is loaded. A library that attacks its parent meets the guardian, not the
// checker, and all processes that it leaves end with the guardian.
#pragma once

#include <functional>

#include "compliance/process/pipe.h"
#include "compliance/process/signals.h"

namespace compliance {

/// The descriptor to which the work writes its result. The others are the three standard ones.
inline constexpr int ResultDescriptor = 3;

/// The bytes of memory and of a file that the work may use.
inline constexpr size_t MostMemory = size_t{2} << 30U;
inline constexpr size_t MostFile = size_t{1} << 30U;

/// The last byte of a result: it leaves the buffer of a stream where those of a program are flushed, at the very end.
inline constexpr char EndMark = 0;

/// What the process of the work and its guardian write to.
struct Streams {
  Pipe output;
  Pipe messages;  ///< its standard error
  Pipe result;
  Pipe note;  ///< an EndNote, from the guardian
};

/// How the process of the work ended.
struct EndNote {
  int status = 0;                ///< as of waitpid()
  int signal = 0;                ///< that it sent to its guardian; 0 for none
  long peakKilobytes = 0;        ///< of its memory
  bool leavesProcesses = false;  ///< others, which it had started, outlived it
};

/// Runs `work` in a child process, which then ends as programs end, destructors of the library included. Writes a note
/// of how it ended, and ends, too. Ends early, together with all descendants, when `supervisor`, its own parent, has
/// ended.
[[noreturn]] void guard(const std::function<void()>& work, const Streams& streams, const Signals& signals,
                        pid_t supervisor);

}  // namespace compliance
