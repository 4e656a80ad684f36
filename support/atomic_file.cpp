#include "support/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "support/path_text.h"
#include "support/system_error.h"
#include "support/unique_fd.h"
#include "support/uuid.h"

namespace morvane {

namespace {

void failWith(int error) {
    errno = error;
    throwErrno();
}

// A path that the system would cut at a NUL byte names another file.
void requireNoNul(const std::string& path) {
    if (path.find('\0') != std::string::npos)
        failWith(EINVAL);
}

void writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            throwErrno();
    }
}

// The temporary file: gone again unless it took the place of its target.
class TemporaryFile {
public:
    TemporaryFile(std::string path, unsigned mode) : path_(std::move(path)) {
        file_.reset(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
        if (!file_)
            throwErrno();
        exists_ = true;
    }
    ~TemporaryFile() {
        if (exists_)
            ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int descriptor() const { return file_.get(); }
    // Some file systems report a failed write no earlier than here.
    void close() {
        if (::close(file_.release()) != 0)
            throwErrno();
    }
    void moveOver(const std::string& target) {
        if (::rename(path_.c_str(), target.c_str()) != 0)
            throwErrno();
        exists_ = false;
    }

private:
    std::string path_;
    UniqueFd file_;
    bool exists_ = false;
};

// Makes the rename itself lasting.
void syncFolder(const std::string& folder) {
    const UniqueFd descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor)
        throwErrno();
    if (::fsync(descriptor.get()) != 0 && errno != EINVAL)  // EINVAL: this file system has no such thing
        throwErrno();
}

}  // namespace

void replaceFile(const std::string& path, std::string_view bytes, Durability durability, unsigned mode) {
    requireNoNul(path);
    const std::string_view parent = parentPath(path);
    const std::string folder(parent.empty() ? "." : parent);
    TemporaryFile temporary(joinPath(folder, ".morvane-" + newUuid() + ".tmp"), mode);
    writeAll(temporary.descriptor(), bytes);
    if (durability == Durability::RenameAndSync && ::fsync(temporary.descriptor()) != 0)
        throwErrno();
    temporary.close();
    temporary.moveOver(path);
    if (durability == Durability::RenameAndSync)
        syncFolder(folder);
}

std::string readFile(const std::string& path, std::size_t limit) {
    requireNoNul(path);
    // Without waiting: the open of a pipe would block until somebody writes.
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file)
        throwErrno();
    struct stat status {};
    if (::fstat(file.get(), &status) != 0)
        throwErrno();
    if (!S_ISREG(status.st_mode))
        failWith(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);

    constexpr std::size_t block = std::size_t{1} << 16;
    const auto expected = static_cast<std::size_t>(status.st_size);
    if (expected > limit)
        failWith(EFBIG);
    std::string content;
    std::size_t filled = 0;
    for (;;) {
        if (filled == content.size())
            content.resize(filled == 0 ? expected + 1 : filled + std::max(filled, block));
        const ssize_t count = ::read(file.get(), content.data() + filled, content.size() - filled);
        if (count < 0 && errno != EINTR)
            throwErrno();
        if (count == 0)
            break;
        filled += count > 0 ? static_cast<std::size_t>(count) : 0;
        if (filled > limit)
            failWith(EFBIG);
    }
    content.resize(filled);
    return content;
}

}  // namespace morvane
