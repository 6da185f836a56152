// The list of installed devices.
#pragma once

/// Prints a line a device: its position in the library's list and its description, in the environment's character set.
/// Returns 0, 2 when no device is installed, or 0xE0000000 (as an int) when the library returns no list.
int getAllInstalledDevice();
