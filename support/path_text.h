// Pieces of paths as plain bytes, "/"-separated. Nothing here touches a disk.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Text after the last "/", trailing slashes ignored ("/a/b/" gives "b"; "/" gives "/").
std::string_view lastPathComponent(std::string_view path);
/// Everything before the last component, without a trailing "/" ("/a" gives "/"; "a" gives "").
std::string_view parentPath(std::string_view path);
/// Text after the last "." of the last component; empty when it has none, when the only "." leads
/// the name (".hidden"), or when nothing follows the ".".
std::string_view pathExtension(std::string_view path);
/// `path` without "." and its extension, when it has one.
std::string_view withoutExtension(std::string_view path);
/// Splits at "/" and drops empty pieces.
std::vector<std::string_view> pathPieces(std::string_view path);
/// `folder` + "/" + `name`, with exactly one "/" between.
std::string joinPath(std::string_view folder, std::string_view name);
/// Resolves "." and ".." and repeated or trailing slashes by text alone; links are not looked at.
std::string standardizedPath(std::string_view path);
/// True when `path` is `folder` or lies below it (prefix with a "/").
bool isAtOrBelow(std::string_view path, std::string_view folder);

}  // namespace morvane
