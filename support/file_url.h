// Locations as URL text, as they stand in manifests and hand-off files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace morvane {

/// A location. For a file location `path` holds the exact bytes of an absolute path without a
/// trailing "/" (except "/" itself); for any other scheme `other` holds the whole URL text.
struct FileUrl {
    std::string path;
    bool isDirectory = false;
    std::string other;

    bool isFile() const { return other.empty(); }
    /// Last path component, percent-escapes resolved.
    std::string lastComponent() const;
    /// This location with one more component.
    FileUrl appending(std::string_view component, bool directory) const;
    bool operator==(const FileUrl&) const = default;
};

FileUrl fileLocation(std::string path);
FileUrl folderLocation(std::string path);

/// "file:///a/b%20c.mov"; a folder ends in "/". Every byte outside letters, digits and
/// "!$&'()*+,-./:=@_~" is percent-escaped with upper-case digits (RFC 3986 path characters
/// without ";").
std::string absoluteText(const FileUrl& url);
/// Reads URL text: a file URL (host empty or "localhost", escapes resolved, a final "/" marks a
/// folder) or any other scheme kept as it is. Nothing for text that is no absolute URL, a broken
/// escape, or an escaped NUL byte.
std::optional<FileUrl> parseUrl(std::string_view text);

}  // namespace morvane
