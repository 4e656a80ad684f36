#include "project/temporary_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

#include "platform/exclusive_rename.h"
#include "project/safe_paths.h"
#include "support/system_error.h"
#include "support/uuid.h"

namespace morvane {

namespace {

constexpr std::string_view prefix = ".morvane-";
constexpr std::string_view suffix = ".partial";

}  // namespace

std::string temporaryName() {
    return std::string(prefix).append(newUuid()).append(suffix);
}

bool isTemporaryName(std::string_view name) {
    if (!name.starts_with(prefix) || !name.ends_with(suffix) || name.size() <= prefix.size() + suffix.size())
        return false;
    const std::string_view uuid = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
    return parseUuid(uuid) == uuid;
}

TemporaryFile::TemporaryFile(int folder, mode_t mode) : folder_(folder), name_(temporaryName()) {
    writer_.reset(
        ::openat(folder_, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    created_ = writer_ && ::fstat(writer_.get(), &identity_) == 0;
}

TemporaryFile::~TemporaryFile() {
    writer_.reset();
    if (created_)
        static_cast<void>(::unlinkat(folder_, name_.c_str(), 0));
}

void TemporaryFile::flushAndClose() {
    if (::fsync(writer_.get()) != 0)
        throwErrno();
    if (::close(writer_.release()) != 0)
        throwErrno();
}

const UniqueFd& TemporaryFile::reopen() {
    UniqueFd file(::openat(folder_, name_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (file && ::fstat(file.get(), &status) == 0 && isSameFile(status, identity_))
        reader_ = std::move(file);
    return reader_;
}

int TemporaryFile::publish(const std::string& finalName) {
    const int error = renameExclusively(folder_, name_.c_str(), folder_, finalName.c_str());
    if (error == 0)
        created_ = false;
    return error;
}

}  // namespace morvane
