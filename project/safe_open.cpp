#include "project/safe_open.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "project/project_errors.h"
#include "support/path_text.h"
#include "support/system_error.h"

namespace morvane {

namespace {

UniqueFd openSystemRoot() {
    return UniqueFd(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

UniqueFd openBelow(const UniqueFd& folder, std::string_view piece) {
    return UniqueFd(
        ::openat(folder.get(), std::string(piece).c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Reading must leave no trace, not even an access date; only a file's owner may ask for that.
/// `open` gets the flags of open(2) and gives a descriptor or -1.
template <class Open>
UniqueFd openQuietly(const Open& open) {
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    UniqueFd file(open(flags | O_NOATIME));
    if (!file && errno == EPERM)
        file.reset(open(flags));
    return file;
}

bool isSpecial(mode_t mode) {
    return !S_ISREG(mode) && !S_ISDIR(mode) && !S_ISLNK(mode);
}

bool isRegular(const UniqueFd& file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

/// The regular file at absolute `path` when no link is on the way there; nothing otherwise, and where
/// the system does not know this call.
UniqueFd openWithoutLinks(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    UniqueFd file = openQuietly([&path](int flags) {
        open_how how{};
        how.flags = static_cast<decltype(how.flags)>(flags);
        how.resolve = RESOLVE_NO_SYMLINKS;
        return static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how));
    });
    return file && isRegular(file) ? std::move(file) : UniqueFd();
}

}  // namespace

UniqueFd openFolder(std::string_view path) {
    UniqueFd folder = openSystemRoot();
    for (const auto piece : pathPieces(path)) {
        if (!folder)
            break;
        UniqueFd next = openBelow(folder, piece);
        const int error = errno;
        folder = std::move(next);
        errno = error;
    }
    return folder;
}

UniqueFd openRead(const FileUrl& url) {
    const auto pieces = pathPieces(url.path);
    if (pieces.empty())
        failWith(project_text::emptySourcePath);
    UniqueFd folder = openSystemRoot();
    if (!folder)
        failWith(project_text::cannotOpenSystemRoot);
    for (std::size_t index = 0; index + 1 < pieces.size(); ++index) {
        UniqueFd next = openBelow(folder, pieces[index]);
        if (!next)
            failWith(project_text::sourceParentPrefix,
                     shownName(pieces[index]) + "（" + systemErrorText(errno) + "）");
        folder = std::move(next);
    }
    const std::string name(pieces.back());
    struct stat status {};
    // Devices, sockets and FIFOs are not even opened: for some of them that alone has effects.
    if (::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && isSpecial(status.st_mode))
        failWith(project_text::sourceNotRegular);
    UniqueFd file = openQuietly([&](int flags) { return ::openat(folder.get(), name.c_str(), flags); });
    if (!file)
        failWith(project_text::cannotReadSourcePrefix, shownName(name));
    if (!isRegular(file))
        failWith(project_text::sourceNotRegular);
    return file;
}

UniqueFd SafeOpener::openRead(const FileUrl& url) {
    const std::string_view folder = parentPath(url.path);
    if (url.path.starts_with('/') && folder == reachedFolder_)
        if (UniqueFd file = openWithoutLinks(url.path))
            return file;
    reachedFolder_.clear();
    UniqueFd file = morvane::openRead(url);
    reachedFolder_ = folder;
    return file;
}

}  // namespace morvane
