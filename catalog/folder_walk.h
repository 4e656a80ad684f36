// The walk of one folder tree by two threads.
//
// Folders wait on one stack; each of two threads takes one, reads its entries with getdents64 and asks for
// the attributes of the media files alone. What a thread finds stays with it (names in one block, files in
// one array), so the threads share nothing but the stack and a counter. Afterwards folders are put in byte
// order of their paths, files in byte order of their names: the result does not depend on the threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

struct WalkedFile {
    std::string_view name;
    std::int64_t size = 0;  ///< bytes
    double modified = 0;    ///< seconds since 1970 UTC
};

struct WalkRequest {
    std::string folder;  ///< absolute, no trailing "/" unless it is "/"
    /// Files for which this is true are passed over uncounted. Asked from both threads; may be empty.
    std::function<bool(const std::string& path)> isKnown;
    /// Told of each batch of files found, from both threads; may be empty.
    std::function<void(std::size_t files)> found;
    std::stop_token stop;
};

/// What a walk found. The names lie in the walk that gave them.
class FolderWalk {
public:
    /// Walks at once. Check `request.stop` afterwards: a stopped walk is incomplete.
    explicit FolderWalk(const WalkRequest& request);

    /// Folders that could not be read, and names that are no UTF-8.
    std::size_t unreadable() const { return unreadable_; }
    std::size_t fileCount() const;
    /// Calls `take` for every folder that holds media files, in order.
    void forEachFolder(const std::function<void(const std::string& folder,
                                                const std::vector<WalkedFile>& files)>& take) const;

private:
    struct File {
        std::size_t nameOffset = 0;
        std::size_t nameLength = 0;
        std::int64_t size = 0;
        double modified = 0;
    };
    struct Folder {
        std::string path;
        std::size_t firstFile = 0;
        std::size_t fileCount = 0;
    };
    // What one thread found.
    struct Part {
        std::vector<char> names;
        std::vector<File> files;
        std::vector<Folder> folders;
        std::size_t unreadable = 0;
    };
    class Stack;
    class Reader;

    std::vector<Part> parts_;
    std::size_t unreadable_ = 0;
};

}  // namespace morvane
