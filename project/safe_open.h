// Reaching files and folders without ever following a symbolic link.
#pragma once

#include <string>
#include <string_view>

#include "support/file_url.h"
#include "support/unique_fd.h"

namespace morvane {

/// A read-only descriptor of the regular file at `url`, reached from "/" one folder at a time, no
/// symbolic link followed anywhere. The open itself never blocks (a FIFO is refused, not waited
/// for). Throws ProjectCoreError with the described texts.
UniqueFd openRead(const FileUrl& url);

/// The same for many files of few folders: a file in the folder of the one before is opened in one call,
/// by which the system refuses links anywhere on the path (openat2(2)); only that all folders above can
/// be read is not asked again. One thread uses it at a time.
class SafeOpener {
public:
    UniqueFd openRead(const FileUrl& url);

private:
    std::string reachedFolder_;  ///< of the file opened last
};

/// A descriptor of the folder at `path`, reached the same way; an empty one with errno set when a
/// piece is missing, no folder, or a symbolic link.
UniqueFd openFolder(std::string_view path);

}  // namespace morvane
