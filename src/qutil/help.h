// The help text.
#pragma once

/// Prints what "/?" shows.
void printHelp();
