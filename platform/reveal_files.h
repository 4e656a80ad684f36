// Showing files in the desktop's file manager (D-Bus org.freedesktop.FileManager1).
#pragma once

#include <string>
#include <vector>

#include <QString>

namespace morvane {

/// Opens one file-manager window with all `files` selected (ShowItems). When no service answers,
/// opens the folder of the first with its default application. Returns at once; main thread.
void revealFiles(const std::vector<std::string>& files);
/// Opens `folder` itself with nothing selected (ShowFolders), with the same fallback.
void revealFolder(const std::string& folder);

}  // namespace morvane
