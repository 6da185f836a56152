// Waiting for a time, a key or an answer. Standard output is flushed before each wait, so that what the
// operator must read is on the screen, or in the log, meanwhile.
#pragma once

/// Waits for one key without echo and without Enter. Returns its code (0 to 255), or -1 when standard input is no
/// terminal, cannot be switched or restored, or has ended. A character that an earlier read left in the stream's buffer
/// counts as the key.
int getch();

/// Reads one character of a line that the operator types. What follows on the line stays buffered. Negative at the end
/// of input.
int readAnswer();

/// Sleeps whole seconds.
void pauseSeconds(unsigned seconds);
