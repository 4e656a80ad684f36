#include "app/decisions.h"

#include <algorithm>

#include "catalog/settings.h"

namespace morvane {

bool toggleFavorites(std::unordered_set<std::string>& favorites, const std::vector<FileRef>& files) {
    if (files.empty())
        return false;
    const bool allIn = std::all_of(files.begin(), files.end(),
                                   [&](const FileRef& file) { return favorites.contains(file.path); });
    for (const FileRef& file : files) {
        if (allIn)
            favorites.erase(file.path);
        else
            favorites.insert(file.path);
    }
    return true;
}

void appendRoots(std::vector<std::string>& roots, const std::vector<std::string>& folders) {
    for (const std::string& folder : folders)
        if (std::find(roots.begin(), roots.end(), folder) == roots.end())
            roots.push_back(folder);
}

void removeRoot(std::vector<std::string>& roots, const std::string& root) {
    std::erase(roots, root);
}

void rememberPaths(std::vector<std::string>& recent, const std::vector<std::string>& paths) {
    for (const std::string& path : paths)
        rememberPath(recent, path);
}

}  // namespace morvane
