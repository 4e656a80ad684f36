// Paths that are safe to write to, and what a source file is at this moment.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "support/file_url.h"

namespace morvane {

enum class LocationKind { File, Folder };

/// The real path of `url` (every link, "." and ".." resolved by the system). Throws
/// ProjectCoreError unreachablePathPrefix + last component.
FileUrl canonical(const FileUrl& url, LocationKind kind);

/// True for a character of Unicode category Cc, "/" or ":" anywhere in valid UTF-8 `text`.
bool hasUnsafeCharacter(std::string_view text);

/// One safe path component, valid UTF-8: bytes that are no UTF-8, control characters (Cc), "/" and
/// ":" become "_"; cut to the first 180 user-perceived characters; "", "." and ".." become "素材".
std::string safeComponent(std::string_view text);

/// True when `path` does not begin with "/", has at least two components, none empty, "." or "..",
/// and begins with a template folder.
bool safeRelative(std::string_view path);

/// Destinations taken so far, under keys folded for case and diacritics (locale en_US_POSIX).
class ReservedNames {
public:
    /// `path` itself when it is free, else the first free of "stem (2).ext", "stem (3).ext", ...;
    /// the result is taken from then on. A path also counts as taken when it is the folder of a
    /// taken one; a folder of `path` that is taken as a file is numbered in the same way. A numbered
    /// name that no file system could hold (over 255 bytes) gets a shorter stem.
    std::string unique(std::string_view path);

private:
    /// Lets a part of a key be looked up without being copied.
    struct KeyHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>{}(key); }
    };
    using Keys = std::unordered_set<std::string, KeyHash, std::equal_to<>>;

    std::string withFreeFolders(std::string_view path) const;
    bool isBelowFile(std::string_view key) const;

    Keys files_;
    Keys folders_;  ///< all above the files; none of them is in files_
};

struct FileAttributes {
    std::int64_t size = 0;  ///< bytes
    double modified = 0;    ///< seconds since 1970-01-01 UTC
};

/// True when two dates (seconds since 1970) are 0.001 s or more apart, compared in whole microseconds:
/// a double holds little more at today's dates.
bool isOtherDate(double left, double right);

/// Whether both tell of one and the same file, whatever its name.
inline bool isSameFile(const struct stat& left, const struct stat& right) {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

/// Size and date as plans carry them.
FileAttributes attributesOf(const struct stat& status);
/// Size and date of the regular file at `url` itself (links are not followed). Throws
/// ProjectCoreError: sourceNotRegularPrefix for anything that is no regular file,
/// unreachablePathPrefix when nothing can be found there; each with the last component.
FileAttributes attributes(const FileUrl& url);

}  // namespace morvane
