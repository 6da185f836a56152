// The help.
#pragma once

/// Prints what "/?" shows.
void printHelp();
