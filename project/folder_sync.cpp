#include "project/folder_sync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "support/system_error.h"

namespace morvane {

void syncFolder(int folder) {
    if (::fsync(folder) != 0 && errno != EINVAL && errno != ENOSYS && errno != ENOTSUP)
        throwErrno();
}

void writeAll(int file, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(file, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throwErrno();
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

void startWriteBack(int file, std::int64_t offset, std::int64_t count) {
    static_cast<void>(::sync_file_range(file, offset, count, SYNC_FILE_RANGE_WRITE));
}

}  // namespace morvane
