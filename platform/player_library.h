// The player library (libmpv), set up so that it opens one file and nothing else.
#pragma once

#include <mpv/client.h>

#include <memory>
#include <string>

namespace morvane {

enum class PlayerContent;

struct PlayerDeleter {
    /// Waits for the threads of the library, which may hang on a dead disk.
    void operator()(mpv_handle* player) const { mpv_terminate_destroy(player); }
};
using PlayerHandle = std::unique_ptr<mpv_handle, PlayerDeleter>;

/// A player that reads no configuration, runs no script, takes no key, looks for no neighbour file,
/// writes nothing and knows only the containers of the listed kinds of media. It is paused, stays
/// open at the end, and seeks exactly. Null when the library refuses. Needs the numeric C locale.
/// Any thread.
PlayerHandle openPlayer(PlayerContent content);

/// Begins loading the file at `path`, which must outlive the player: a regular file that is no
/// symbolic link, whatever its name looks like. The outcome comes as events.
bool beginLoading(mpv_handle* player, const std::string& path);

}  // namespace morvane
