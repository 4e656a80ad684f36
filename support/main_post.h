// Posting work to the main thread from any other.
#pragma once

#include <functional>

namespace morvane {

/// Runs `work` on the main thread's event loop, later, in the order of the calls from one thread.
/// Needs a QCoreApplication; work posted while there is none, or after it began to end, is
/// dropped. Any thread. The hand-over goes through a mutex of our own, so everything written
/// before the call is seen by `work`.
void postToMain(std::function<void()> work);

}  // namespace morvane
