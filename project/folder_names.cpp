#include "project/folder_names.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

namespace morvane {

std::optional<std::vector<std::string>> folderNames(const UniqueFd& folder) {
    UniqueFd own(folder ? ::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0) : -1);
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(own ? ::fdopendir(own.get()) : nullptr, &::closedir);
    if (!listing)
        return std::nullopt;
    own.release();
    std::vector<std::string> names;
    errno = 0;
    // The stream is this function's own: nothing else reads from it meanwhile.
    while (const dirent* found = ::readdir(listing.get())) {  // NOLINT(concurrency-mt-unsafe)
        const std::string_view name = found->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
        errno = 0;
    }
    if (errno != 0)
        return std::nullopt;
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace morvane
