// The library's small decisions as pure functions: what the controller's operations compute, apart
// from widgets, queues and disks.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "library_ui/file_checker.h"

namespace morvane {

/// When every one of `files` is a favourite, takes them all out; otherwise puts all in. Returns
/// false, changing nothing, for no files.
bool toggleFavorites(std::unordered_set<std::string>& favorites, const std::vector<FileRef>& files);

/// Appends the folders that are not in `roots` yet (exact text), in their order.
void appendRoots(std::vector<std::string>& roots, const std::vector<std::string>& folders);

/// Takes `root` out of `roots` (exact text).
void removeRoot(std::vector<std::string>& roots, const std::string& root);

/// Records one use of each path, in their order: the last one becomes the newest.
void rememberPaths(std::vector<std::string>& recent, const std::vector<std::string>& paths);

}  // namespace morvane
