// The message for arguments that name no command.
#pragma once

#include <cstdio>

/// Prints that the arguments are not enough and where to find help.
inline void reportInsufficientParameter() {
  printf("Insufficient parameter! Please use \"qutil /?\"to get help. (Errorlevel = %d)\n", 1);
}
