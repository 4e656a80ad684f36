// The thread on which a media player does everything that may wait: for the file, the decoders or the
// sound device.
#pragma once

#include <memory>

#include "platform/player_session.h"

namespace morvane {

/// Starts the thread of a session whose fixed fields are set. It ends by itself some time after the
/// session is asked to stop, and keeps the session alive until then.
void startPlayerThread(std::shared_ptr<PlayerSession> session);

/// Waits, for three seconds at most, until all such threads have ended.
void waitForPlayerThreads();

}  // namespace morvane
