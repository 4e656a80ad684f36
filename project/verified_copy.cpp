#include "project/verified_copy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <utility>

#include "project/file_hash.h"
#include "project/folder_sync.h"
#include "project/project_errors.h"
#include "project/safe_open.h"
#include "project/safe_paths.h"
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

class VerifiedCopier::Begun {
public:
    Begun(const ProjectPlanItem& plannedItem, Destination openDestination, Source openSource)
        : item(plannedItem),
          destination(std::move(openDestination)),
          source(std::move(openSource)),
          temporary(destination.folder.get(), unpublishedMode) {}

    const ProjectPlanItem& item;
    const Destination destination;
    const Source source;
    TemporaryFile temporary;
    std::int64_t bytes = 0;  ///< read and written
    std::string digest;      ///< of them
};

struct VerifiedCopier::State {
    explicit State(JobContext& jobContext)
        : context(jobContext), streamer(jobContext), verifier(jobContext) {}

    void stream(Begun& copy, const ByteProgress& byteProgress);
    void verify(Begun& copy);

    JobContext& context;
    FileHasher streamer;  ///< of begin()
    FileHasher verifier;  ///< of finish()
};

VerifiedCopier::VerifiedCopier(JobContext& context) : state_(std::make_unique<State>(context)) {}
VerifiedCopier::~VerifiedCopier() = default;

void VerifiedCopier::State::stream(Begun& copy, const ByteProgress& byteProgress) {
    const int source = copy.source.file.get();
    const int target = copy.temporary.writer();
    ::posix_fadvise(source, 0, 0, POSIX_FADV_SEQUENTIAL);
    ByteCount total(byteProgress);
    std::int64_t begun = 0;  // up to here the system was asked to write
    context.throwIfCancelled();
    copy.digest = streamer.hashStream(
        [&](char* block, std::size_t room) {
            const std::size_t count = readSome(source, block, room);
            writeAll(target, block, count);
            total.add(count);
            if (total.total() - begun >= writeBackStep) {
                startWriteBack(target, begun, total.total() - begun);
                begun = total.total();
            }
            context.throwIfCancelled();
            return count;
        },
        copy.source.status.st_size);
    copy.bytes = total.total();
}

/// Reads the flushed file back, by its name, after its cached pages were dropped.
void VerifiedCopier::State::verify(Begun& copy) {
    const UniqueFd& file = copy.temporary.reopen();
    if (!file)
        failWith(project_text::verificationFailed);
    ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED);
    if (verifier.hashOpen(file.get()) != copy.digest)
        failWith(project_text::verificationFailed);
}

std::shared_ptr<VerifiedCopier::Begun> VerifiedCopier::begin(const ProjectPlanItem& item, const FileUrl& root,
                                                             const ByteProgress& byteProgress) {
    if (!safeRelative(item.relativeDestination))
        failWith(project_text::unsafeDestination);
    Destination destination = openDestination(item, root);
    Source source = openUnchangedSource(item);
    auto copy = std::make_shared<Begun>(item, std::move(destination), std::move(source));
    if (!copy->temporary)
        failWith(project_text::cannotMakeTemporary);
    state_->stream(*copy, byteProgress);
    return copy;
}

const std::string& VerifiedCopier::digest(const Begun& begun) {
    return begun.digest;
}

std::string VerifiedCopier::finish(std::shared_ptr<Begun> begun) {
    const std::shared_ptr<Begun> copy = std::move(begun);
    copy->temporary.flushAndClose();
    refuseChangedSource(copy->source, copy->bytes);
    const ProjectPlanItem& item = copy->item;
    if (item.sourceHash && *item.sourceHash != copy->digest)
        failWith(project_text::sourceDiffersFromPlan);
    state_->verify(*copy);
    state_->context.throwIfCancelled();
    if (copy->temporary.publish(copy->destination.name) != 0)
        failWith(project_text::cannotCommit);
    setCopyAttributes(copy->temporary.reader(), item.modified);
    syncFolder(copy->destination.folder.get());
    return copy->digest;
}

std::string VerifiedCopier::copy(const ProjectPlanItem& item, const FileUrl& root,
                                 const ByteProgress& byteProgress) {
    return finish(begin(item, root, byteProgress));
}

}  // namespace morvane
