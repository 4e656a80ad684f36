#include "project/manifest_copies.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <utility>

#include "platform/exclusive_rename.h"
#include "project/folder_sync.h"
#include "project/manifest.h"
#include "project/project_errors.h"
#include "project/safe_paths.h"
#include "project/temporary_file.h"
#include "support/system_error.h"

namespace morvane {

namespace {

const std::string& targetName() {
    static const std::string name(manifestFilename);
    return name;
}

/// A lease for writing is granted only while no other descriptor of the file is open anywhere.
bool isOpenNowhereElse(int file) {
    if (::fcntl(file, F_SETLEASE, F_WRLCK) != 0)
        return false;
    static_cast<void>(::fcntl(file, F_SETLEASE, F_UNLCK));
    return true;
}

void overwrite(int file, const std::string& text, ManifestText::Range range) {
    for (std::size_t done = 0; done < range.count;) {
        const ssize_t count = ::pwrite(file, text.data() + range.offset + done, range.count - done,
                                       static_cast<off_t>(range.offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwErrno();
        done += static_cast<std::size_t>(count);
    }
}

}  // namespace

ManifestCopies::~ManifestCopies() {
    try {
        endFlush();
    } catch (const std::system_error&) {
        // Nothing is overwritten any more: nothing depends on this flush.
    }
    forget();
}

void ManifestCopies::noteChange(ManifestText::Range range) {
    for (Copy& spare : spares_)
        spare.behind.push_back(range);
    if (current_)
        current_->behind.push_back(range);
}

void ManifestCopies::checkTarget() const {
    struct stat status {};
    if (::fstatat(root_, targetName().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(status.st_mode))
        failWith(project_text::manifestTargetNotRegular);
}

/// Not where the file under the manifest's name is another one than was put there.
bool ManifestCopies::canExchange() const {
    struct stat named {};
    struct stat open {};
    return knowsExchange_ && current_ &&
           ::fstatat(root_, targetName().c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(current_->file.get(), &open) == 0 && isSameFile(named, open);
}

std::optional<ManifestCopies::Copy> ManifestCopies::takeFree() {
    if (flushingTo_ && !folderFlush_.isRunning())
        endFlush();
    if (spares_.empty() || !isFree(spares_.front()) || !isOpenNowhereElse(spares_.front().file.get()))
        return std::nullopt;
    Copy copy = std::move(spares_.front());
    spares_.pop_front();
    return copy;
}

ManifestCopies::Copy ManifestCopies::take(const ManifestText& text) {
    if (spares_.empty())
        return make(text);
    if (!isFree(spares_.front()))
        endFlush();
    if (!isFree(spares_.front())) {
        beginFlush();
        endFlush();
    }
    Copy copy = std::move(spares_.front());
    spares_.pop_front();
    if (isOpenNowhereElse(copy.file.get()))
        return copy;
    remove(copy);
    return make(text);
}

ManifestCopies::Copy ManifestCopies::make(const ManifestText& text) const {
    Copy copy;
    copy.name = temporaryName();
    copy.file.reset(
        ::openat(root_, copy.name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!copy.file)
        throwErrno();
    // Someone who opens the file while a lease is asked for makes the system send a signal: one that
    // is ignored unless asked for, not the default that ends the process.
    static_cast<void>(::fcntl(copy.file.get(), F_SETSIG, SIGURG));
    try {
        writeAll(copy.file.get(), text.text().data(), text.text().size());
    } catch (...) {
        remove(copy);
        throw;
    }
    return copy;
}

void ManifestCopies::bringUpToDate(Copy& copy, const ManifestText& text) {
    for (const auto range : copy.behind)
        overwrite(copy.file.get(), text.text(), range);
    overwrite(copy.file.get(), text.text(), text.head());
    copy.behind.clear();
}

void ManifestCopies::giveBack(Copy copy) {
    spares_.push_front(std::move(copy));
}

void ManifestCopies::remove(const Copy& copy) const {
    static_cast<void>(::unlinkat(root_, copy.name.c_str(), 0));
}

bool ManifestCopies::exchange(Copy next) {
    if (exchangeNames(root_, next.name.c_str(), targetName().c_str()) != 0) {
        remove(next);
        knowsExchange_ = false;
        return false;
    }
    std::swap(current_->name, next.name);
    std::swap(*current_, next);
    next.leftAt = ++exchanges_;
    spares_.push_back(std::move(next));
    // Two at a time: the writes of one file.
    if (spares_.size() >= 2 && !isFree(spares_[spares_.size() - 2]))
        beginFlush();
    return true;
}

std::optional<double> ManifestCopies::availableBytes() const {
    struct statvfs volume {};
    if (::fstatvfs(root_, &volume) != 0)
        return std::nullopt;
    return static_cast<double>(volume.f_bavail) * static_cast<double>(volume.f_frsize);
}

void ManifestCopies::forget() {
    for (const Copy& spare : spares_)
        remove(spare);
    spares_.clear();
    current_.reset();
}

void ManifestCopies::replace(Copy next) {
    if (::renameat(root_, next.name.c_str(), root_, targetName().c_str()) != 0) {
        const int error = errno;
        remove(next);
        errno = error;
        throwErrno();
    }
    current_ = std::move(next);
    syncFolder(root_);
}

/// Begins to flush the folder, unless that is in progress.
void ManifestCopies::beginFlush() {
    if (flushingTo_)
        return;
    flushingTo_ = exchanges_;
    folderFlush_.start([root = root_] { syncFolder(root); });
}

/// Waits for the flush in progress, if there is one.
void ManifestCopies::endFlush() {
    const auto reached = std::exchange(flushingTo_, std::nullopt);
    folderFlush_.wait();
    if (reached)
        flushedUpTo_ = *reached;
}

}  // namespace morvane
