#include "project/manifest_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/exclusive_rename.h"
#include "project/folder_sync.h"
#include "project/manifest.h"
#include "project/project_errors.h"
#include "project/temporary_file.h"
#include "support/system_error.h"

namespace morvane {

namespace {

void stamp(ProjectManifest& manifest) {
    if (manifest.revision == std::numeric_limits<std::int64_t>::max())
        throw std::overflow_error("revision");
    ++manifest.revision;
    manifest.updatedAt = std::time(nullptr);
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

ManifestWriter::~ManifestWriter() {
    try {
        endRetiring();
    } catch (const std::system_error&) {
        // Nothing is overwritten any more: nothing depends on this flush.
    }
    removeCopies();
}

void ManifestWriter::persist(ProjectManifest& manifest) {
    stamp(manifest);
    text_.emplace(manifest);
    checkTarget();
    replace({});
}

void ManifestWriter::persist(ProjectManifest& manifest, std::optional<std::size_t> changed,
                             const std::function<void()>& beforePublishing) {
    stamp(manifest);
    if (!text_ || !text_->update(manifest, changed)) {
        text_.emplace(manifest);
        checkTarget();
        replace(beforePublishing);
        return;
    }
    if (changed) {
        for (Copy& spare : spares_)
            spare.behind.push_back(text_->record(*changed));
        if (current_)
            current_->behind.push_back(text_->record(*changed));
    }
    checkTarget();
    if (canExchange_ && isStillCurrent())
        exchange(manifest, beforePublishing);
    else
        replace(beforePublishing);
}

void ManifestWriter::checkTarget() const {
    struct stat status {};
    if (::fstatat(root_, std::string(manifestFilename).c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISREG(status.st_mode))
        failWith(project_text::manifestTargetNotRegular);
}

/// Whether the file under the manifest's name is still the one written last.
bool ManifestWriter::isStillCurrent() const {
    struct stat named {};
    struct stat open {};
    return current_ &&
           ::fstatat(root_, std::string(manifestFilename).c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(current_->file.get(), &open) == 0 && named.st_dev == open.st_dev &&
           named.st_ino == open.st_ino;
}

/// A complete, flushed file with the present text under a fresh temporary name.
ManifestWriter::Copy ManifestWriter::makeCopy() const {
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
        writeAll(copy.file.get(), text_->text().data(), text_->text().size());
        if (::fsync(copy.file.get()) != 0)
            throwErrno();
    } catch (...) {
        remove(copy);
        throw;
    }
    return copy;
}

/// Two spares always; more while they cannot take the room of what is still to be copied.
bool ManifestWriter::wantsAnotherSpare(const ProjectManifest& manifest) const {
    constexpr std::size_t fewestSpares = 2;
    if (spares_.size() >= mostSpares_)
        return false;
    struct statvfs volume {};
    if (spares_.size() < fewestSpares)
        return true;
    if (::fstatvfs(root_, &volume) != 0)
        return false;
    // In floating point, where no sum of sizes overflows; the exact byte does not matter here.
    auto needed = static_cast<double>(text_->text().size()) * 2;
    for (std::size_t index = 0; index < manifest.files.size(); ++index)
        if (manifest.files[index].state != ProjectFileState::verified)
            needed += static_cast<double>(manifest.plan.items[index].size);
    return static_cast<double>(volume.f_bavail) * static_cast<double>(volume.f_frsize) > needed;
}

/// A complete, flushed copy of the present text: the oldest spare brought up to date, or a new file.
ManifestWriter::Copy ManifestWriter::takeCopy(const ProjectManifest& manifest) {
    if (wantsAnotherSpare(manifest)) {
        try {
            return makeCopy();
        } catch (const std::system_error& error) {
            // A full disk ends no run that can go on with the copies it has.
            if (spares_.empty() || error.code() != std::errc::no_space_on_device)
                throw;
            mostSpares_ = spares_.size();
        }
    }
    if (!isRetired(spares_.front()))
        endRetiring();
    if (!isRetired(spares_.front())) {
        beginRetiring();
        endRetiring();
    }
    Copy copy = std::move(spares_.front());
    spares_.pop_front();
    if (!isOpenNowhereElse(copy.file.get())) {
        remove(copy);
        return makeCopy();
    }
    try {
        update(copy);
    } catch (...) {
        remove(copy);
        throw;
    }
    return copy;
}

void ManifestWriter::update(Copy& copy) const {
    for (const auto range : copy.behind)
        overwrite(copy.file.get(), text_->text(), range);
    overwrite(copy.file.get(), text_->text(), text_->head());
    if (::fdatasync(copy.file.get()) != 0)
        throwErrno();
    copy.behind.clear();
}

/// Begins to flush the folder, unless that is in progress.
void ManifestWriter::beginRetiring() {
    if (flushingTo_)
        return;
    flushingTo_ = exchanges_;
    folderFlush_.start([root = root_] { syncFolder(root); });
}

/// Waits for the flush in progress, if there is one.
void ManifestWriter::endRetiring() {
    const auto reached = std::exchange(flushingTo_, std::nullopt);
    folderFlush_.wait();
    if (reached)
        flushedUpTo_ = *reached;
}

void ManifestWriter::replace(const std::function<void()>& beforePublishing) {
    removeCopies();
    current_.reset();
    Copy copy = makeCopy();
    try {
        if (beforePublishing)
            beforePublishing();
        if (::renameat(root_, copy.name.c_str(), root_, std::string(manifestFilename).c_str()) != 0)
            throwErrno();
    } catch (...) {
        remove(copy);
        throw;
    }
    current_ = std::move(copy);
    syncFolder(root_);
}

void ManifestWriter::exchange(const ProjectManifest& manifest,
                              const std::function<void()>& beforePublishing) {
    Copy next = takeCopy(manifest);
    try {
        if (beforePublishing)
            beforePublishing();
    } catch (...) {
        remove(next);
        throw;
    }
    if (exchangeNames(root_, next.name.c_str(), std::string(manifestFilename).c_str()) != 0) {
        remove(next);
        canExchange_ = false;
        replace({});
        return;
    }
    Copy old = std::move(*current_);
    old.name = std::exchange(next.name, std::string());
    old.leftAt = ++exchanges_;
    spares_.push_back(std::move(old));
    current_ = std::move(next);
    // Only the oldest is still free: the time of the next writes is there for the flush.
    if (spares_.size() > 1 && !isRetired(spares_[1]))
        beginRetiring();
}

void ManifestWriter::remove(const Copy& copy) const {
    static_cast<void>(::unlinkat(root_, copy.name.c_str(), 0));
}

void ManifestWriter::removeCopies() {
    for (const Copy& spare : spares_)
        remove(spare);
    spares_.clear();
}

}  // namespace morvane
