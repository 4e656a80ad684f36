// SIGINT and SIGTERM as a question the work asks between its steps.
#pragma once

namespace morvane {

/// From now on the first SIGINT or SIGTERM only sets the mark; a second one ends the process.
void watchStopSignals();
/// True once a signal arrived. Any thread.
bool stopRequested();
/// Throws StoppedError once a signal arrived.
void throwIfStopped();

}  // namespace morvane
