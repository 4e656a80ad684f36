// What the open panel shows of the disks: places and the entries of one folder. Synchronous and
// possibly slow: never on the main thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace morvane {

struct FolderEntry {
    std::string name;  ///< bytes as the disk has them
    bool isFolder = false;
    std::int64_t size = 0;      ///< bytes; 0 for folders
    std::int64_t modified = 0;  ///< seconds since 1970-01-01 UTC
    bool operator==(const FolderEntry&) const = default;
};

struct FolderListing {
    std::string path;                  ///< the folder listed, standardized
    std::vector<FolderEntry> entries;  ///< folders first, each group in the file browser's order
    std::string select;                ///< name of an entry that was asked for by its own path
    std::string error;                 ///< text for the user; then `entries` is empty
};

/// Lists `path`, or, when that is a file, the folder that holds it with the file to be selected.
/// Hidden entries (names beginning with ".") and broken links are left out; links count as what they
/// point to. Ends early, with what it has, once `cancelled` is true.
FolderListing listFolder(const std::string& path, const std::atomic<bool>& cancelled);

/// Makes the folder `name` in `folder`, which must not exist. Returns a text for the user, empty on
/// success.
std::string makeFolder(const std::string& folder, const std::string& name);

struct Place {
    std::string title;
    std::string path;
    std::string symbol;
    bool operator==(const Place&) const = default;
};

/// The user's folders that exist, then every mounted drive, then the root of the file system.
std::vector<Place> knownPlaces();
/// The mount points of `mountInfo` (text of /proc/self/mountinfo) that are drives a person attached
/// or mounted by hand: below /media, /run/media and /mnt.
std::vector<Place> mountedDrives(const std::string& mountInfo);

}  // namespace morvane
