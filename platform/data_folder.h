// The per-user data folder ($XDG_DATA_HOME, else ~/.local/share) and the shared ones
// ($XDG_DATA_DIRS), after the XDG base directory rules.
#pragma once

#include <string>
#include <vector>

namespace morvane {

/// Absolute path. A relative XDG_DATA_HOME is ignored, as the rules say; the home folder is $HOME, else
/// the user database's. Throws std::runtime_error when none of these is known.
std::string userDataFolder();
/// Absolute paths in order of importance; /usr/local/share and /usr/share when the variable is not set.
std::vector<std::string> sharedDataFolders();

/// Name of the program's own folder below userDataFolder().
inline constexpr const char* storeFolderName = "LumvexAssetLibrary";

}  // namespace morvane
