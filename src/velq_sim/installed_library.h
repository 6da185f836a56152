// The device library that qutil meets on this machine.
#pragma once

namespace velq_sim {

/// Loads libvelq.so as the dynamic loader finds it for qutil, a preloaded probe included; the operations of
/// <velq/velq.h> call it from then on. Throws Failure when there is none.
void loadInstalledLibrary();

}  // namespace velq_sim
