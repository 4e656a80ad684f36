#include "support/path_text.h"

#include <cstddef>

namespace morvane {

namespace {

// Without trailing slashes; "/" (any number of them) stays "/".
std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

}  // namespace

std::string_view lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/")
        return path;
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view parentPath(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return withoutTrailingSlashes(path.substr(0, slash == 0 ? 1 : slash));
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return {};
    return name.substr(dot + 1);
}

std::string_view withoutExtension(std::string_view path) {
    const std::string_view extension = pathExtension(path);
    if (extension.empty())
        return path;
    path = withoutTrailingSlashes(path);
    return path.substr(0, path.size() - extension.size() - 1);
}

std::vector<std::string_view> pathPieces(std::string_view path) {
    std::vector<std::string_view> pieces;
    while (!path.empty()) {
        const std::size_t slash = path.find('/');
        const std::string_view piece = path.substr(0, slash);
        if (!piece.empty())
            pieces.push_back(piece);
        if (slash == std::string_view::npos)
            break;
        path.remove_prefix(slash + 1);
    }
    return pieces;
}

std::string joinPath(std::string_view folder, std::string_view name) {
    while (!folder.empty() && folder.back() == '/')
        folder.remove_suffix(1);
    while (!name.empty() && name.front() == '/')
        name.remove_prefix(1);
    std::string joined;
    joined.reserve(folder.size() + name.size() + 1);
    joined.append(folder).append("/").append(name);
    return joined;
}

std::string standardizedPath(std::string_view path) {
    if (path.empty())
        return {};
    const bool absolute = path.front() == '/';
    std::vector<std::string_view> kept;
    for (const std::string_view piece : pathPieces(path)) {
        if (piece == ".")
            continue;
        // A relative path may begin above where it starts.
        const bool leadsUp = !absolute && (kept.empty() || kept.back() == "..");
        if (piece != ".." || leadsUp)
            kept.push_back(piece);
        else if (!kept.empty())
            kept.pop_back();
    }
    std::string result(absolute ? "/" : "");
    for (std::size_t index = 0; index < kept.size(); ++index) {
        if (index > 0)
            result += '/';
        result += kept[index];
    }
    return result.empty() ? "." : result;
}

bool isAtOrBelow(std::string_view path, std::string_view folder) {
    folder = withoutTrailingSlashes(folder);
    if (folder.empty() || !path.starts_with(folder))
        return false;
    return path.size() == folder.size() || folder == "/" || path[folder.size()] == '/';
}

}  // namespace morvane
