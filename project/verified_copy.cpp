#include "project/verified_copy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include "project/file_hash.h"
#include "project/folder_sync.h"
#include "project/project_errors.h"
#include "project/safe_open.h"
#include "project/safe_paths.h"
#include "project/side_task.h"
#include "project/temporary_file.h"
#include "support/path_text.h"
#include "support/system_error.h"

namespace morvane {

namespace {

/// Bytes after which the system is asked to begin writing them to the medium.
constexpr std::int64_t writeBackStep = 1'048'576;

/// Opens folder `piece` of `folder`, making it when it is missing.
UniqueFd openOrMake(const UniqueFd& folder, const std::string& piece) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd next(::openat(folder.get(), piece.c_str(), flags));
    if (!next && errno == ENOENT) {
        if (::mkdirat(folder.get(), piece.c_str(), 0755) != 0 && errno != EEXIST)
            failWith(project_text::cannotMakeFolderPrefix, systemErrorText(errno));
        syncFolder(folder.get());
        next.reset(::openat(folder.get(), piece.c_str(), flags));
    }
    if (next)
        return next;
    if (errno == ENOTDIR || errno == ELOOP)
        failWith(project_text::subfolderNotReal);
    failWith(project_text::cannotMakeFolderPrefix, systemErrorText(errno));
}

bool hasParentStep(const std::vector<std::string_view>& pieces) {
    return std::any_of(pieces.begin(), pieces.end(),
                       [](std::string_view piece) { return piece == "." || piece == ".."; });
}

struct Destination {
    UniqueFd folder;
    std::string name;
};

Destination openDestination(const ProjectPlanItem& item, const FileUrl& root) {
    const FileUrl file = fileLocation(joinPath(root.path, item.relativeDestination));
    Destination destination{ensureDirectory(folderLocation(std::string(parentPath(file.path))), root),
                            std::string(lastPathComponent(file.path))};
    struct stat status {};
    if (::fstatat(destination.folder.get(), destination.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        failWith(project_text::destinationTakenPrefix, item.relativeDestination);
    return destination;
}

struct Source {
    UniqueFd file;
    struct stat status;
};

Source openUnchangedSource(const ProjectPlanItem& item) {
    Source source{openRead(item.sourceURL), {}};
    if (::fstat(source.file.get(), &source.status) != 0)
        failWith(project_text::sourceAttributes);
    const FileAttributes now = attributesOf(source.status);
    if (now.size != item.size || isOtherDate(now.modified, item.modified))
        failWith(project_text::sourceChangedPrefix, shownName(item.sourceURL.lastComponent()));
    return source;
}

/// After the last read: what was read must be the file as it stood at the first look.
void refuseChangedSource(const Source& source, std::int64_t bytesRead) {
    struct stat now {};
    const struct stat& before = source.status;
    if (::fstat(source.file.get(), &now) != 0 || bytesRead != before.st_size ||
        now.st_size != before.st_size || now.st_mtim.tv_sec != before.st_mtim.tv_sec ||
        now.st_mtim.tv_nsec != before.st_mtim.tv_nsec)
        failWith(project_text::sourceChangedWhileCopying);
}

}  // namespace

UniqueFd ensureDirectory(const FileUrl& directory, const FileUrl& root) {
    if (!directory.isFile() || !root.isFile() || !isAtOrBelow(directory.path, root.path))
        failWith(project_text::outsideProject);
    const auto pieces = pathPieces(std::string_view(directory.path).substr(root.path.size()));
    if (hasParentStep(pieces))
        failWith(project_text::outsideProject);
    UniqueFd folder = openFolder(root.path);
    if (!folder)
        failWith(project_text::projectChanged);
    for (const auto piece : pieces)
        folder = openOrMake(folder, std::string(piece));
    return folder;
}

void setCopyAttributes(int file, double modified) {
    const double whole = std::floor(modified);
    const std::timespec date{static_cast<std::time_t>(whole),
                             std::min(std::lround((modified - whole) * 1e9), 999'999'999L)};
    const std::timespec times[2] = {{0, UTIME_OMIT}, date};
    static_cast<void>(::futimens(file, times));
    static_cast<void>(::fchmod(file, 0644));
}

struct VerifiedCopier::State {
    explicit State(JobContext& jobContext) : context(jobContext), hasher(jobContext) {}

    std::string stream(const Source& source, int target, ByteCount& total);
    void verify(TemporaryFile& temporary, const std::string& digest);

    JobContext& context;
    FileHasher hasher;
    UniqueFd folder;  ///< of the copy made last; outlives its flush
    SideTask folderFlush;
};

VerifiedCopier::VerifiedCopier(JobContext& context) : state_(std::make_unique<State>(context)) {}
VerifiedCopier::~VerifiedCopier() = default;

std::string VerifiedCopier::State::stream(const Source& source, int target, ByteCount& total) {
    ::posix_fadvise(source.file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    std::int64_t begun = 0;  // up to here the system was asked to write
    context.throwIfCancelled();
    return hasher.hashStream(
        [&](char* block, std::size_t room) {
            const std::size_t count = readSome(source.file.get(), block, room);
            writeAll(target, block, count);
            total.add(count);
            if (total.total() - begun >= writeBackStep) {
                startWriteBack(target, begun, total.total() - begun);
                begun = total.total();
            }
            context.throwIfCancelled();
            return count;
        },
        source.status.st_size);
}

/// Reads the flushed file back, by its name, after its cached pages were dropped.
void VerifiedCopier::State::verify(TemporaryFile& temporary, const std::string& digest) {
    const UniqueFd& file = temporary.reopen();
    if (!file)
        failWith(project_text::verificationFailed);
    ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED);
    if (hasher.hashOpen(file.get()) != digest)
        failWith(project_text::verificationFailed);
}

std::string VerifiedCopier::copy(const ProjectPlanItem& item, const FileUrl& root,
                                 const ByteProgress& byteProgress, const Written& written) {
    if (!safeRelative(item.relativeDestination))
        failWith(project_text::unsafeDestination);
    state_->folderFlush.wait();
    Destination destination = openDestination(item, root);
    const Source source = openUnchangedSource(item);
    TemporaryFile temporary(destination.folder.get(), unpublishedMode);
    if (!temporary)
        failWith(project_text::cannotMakeTemporary);
    ByteCount total(byteProgress);
    std::string digest = state_->stream(source, temporary.writer(), total);
    if (written)
        written(digest);
    temporary.flushAndClose();
    refuseChangedSource(source, total.total());
    if (item.sourceHash && *item.sourceHash != digest)
        failWith(project_text::sourceDiffersFromPlan);
    state_->verify(temporary, digest);
    state_->context.throwIfCancelled();
    if (temporary.publish(destination.name) != 0)
        failWith(project_text::cannotCommit);
    setCopyAttributes(temporary.reader(), item.modified);
    state_->folder = std::move(destination.folder);
    state_->folderFlush.start([folder = state_->folder.get()] { syncFolder(folder); });
    return digest;
}

void VerifiedCopier::waitUntilDurable() {
    state_->folderFlush.wait();
}

}  // namespace morvane
