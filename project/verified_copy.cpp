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

FileUrl folderOf(const ProjectPlanItem& item, const FileUrl& root) {
    return folderLocation(std::string(parentPath(joinPath(root.path, item.relativeDestination))));
}

bool isTaken(const UniqueFd& folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool isSameTime(const timespec& left, const timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
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
        now.st_size != before.st_size || !isSameTime(now.st_mtim, before.st_mtim))
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
    Begun(const ProjectPlanItem& plannedItem, UniqueFd openFolder, Source openSource)
        : item(plannedItem),
          folder(std::move(openFolder)),
          name(nameOf(plannedItem)),
          source(std::move(openSource)),
          temporary(folder.get(), unpublishedMode) {}

    static std::string nameOf(const ProjectPlanItem& item) {
        return std::string(lastPathComponent(item.relativeDestination));
    }

    const ProjectPlanItem& item;
    const UniqueFd folder;
    const std::string name;
    const Source source;
    TemporaryFile temporary;
    std::int64_t bytes = 0;  ///< read and written
    std::string digest;      ///< of them
};

struct VerifiedCopier::State {
    explicit State(JobContext& jobContext)
        : context(jobContext), streamer(jobContext), verifier(jobContext) {}

    std::shared_ptr<Begun> begin(const ProjectPlanItem& item, UniqueFd folder,
                                 const ByteProgress& byteProgress);
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
            if (total.total() - begun >= (count > 0 ? writeBackStep : 1)) {
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

std::shared_ptr<VerifiedCopier::Begun> VerifiedCopier::State::begin(const ProjectPlanItem& item,
                                                                    UniqueFd folder,
                                                                    const ByteProgress& byteProgress) {
    if (isTaken(folder, Begun::nameOf(item)))
        failWith(project_text::destinationTakenPrefix, item.relativeDestination);
    Source source = openUnchangedSource(item);
    auto copy = std::make_shared<Begun>(item, std::move(folder), std::move(source));
    if (!copy->temporary)
        failWith(project_text::cannotMakeTemporary);
    stream(*copy, byteProgress);
    return copy;
}

std::shared_ptr<VerifiedCopier::Begun> VerifiedCopier::begin(const ProjectPlanItem& item, const FileUrl& root,
                                                             const ByteProgress& byteProgress) {
    if (!safeRelative(item.relativeDestination))
        failWith(project_text::unsafeDestination);
    return state_->begin(item, ensureDirectory(folderOf(item, root), root), byteProgress);
}

std::shared_ptr<VerifiedCopier::Begun> VerifiedCopier::beginAhead(const ProjectPlanItem& item,
                                                                  const FileUrl& root,
                                                                  const ByteProgress& byteProgress) {
    UniqueFd folder =
        safeRelative(item.relativeDestination) ? openFolder(folderOf(item, root).path) : UniqueFd();
    if (!folder)
        return nullptr;
    auto copy = state_->begin(item, std::move(folder), byteProgress);
    copy->temporary.flushAndClose();
    return copy;
}

bool VerifiedCopier::stillHolds(const Begun& begun, const FileUrl& root) {
    struct stat held {};
    struct stat named {};
    const UniqueFd folder = openFolder(folderOf(begun.item, root).path);
    if (!folder || ::fstat(begun.folder.get(), &held) != 0 || ::fstat(folder.get(), &named) != 0 ||
        !isSameFile(held, named) || isTaken(folder, begun.name))
        return false;
    try {
        const UniqueFd source = openRead(begun.item.sourceURL);
        const struct stat& before = begun.source.status;
        return ::fstat(source.get(), &named) == 0 && isSameFile(named, before) &&
               named.st_size == before.st_size && isSameTime(named.st_mtim, before.st_mtim) &&
               isSameTime(named.st_ctim, before.st_ctim);
    } catch (const ProjectCoreError&) {
        return false;
    }
}

const std::string& VerifiedCopier::digest(const Begun& begun) {
    return begun.digest;
}

std::string VerifiedCopier::finish(std::shared_ptr<Begun> begun) {
    const std::shared_ptr<Begun> copy = std::move(begun);
    if (copy->temporary.isOpenForWriting())
        copy->temporary.flushAndClose();
    refuseChangedSource(copy->source, copy->bytes);
    const ProjectPlanItem& item = copy->item;
    if (item.sourceHash && *item.sourceHash != copy->digest)
        failWith(project_text::sourceDiffersFromPlan);
    state_->verify(*copy);
    state_->context.throwIfCancelled();
    if (copy->temporary.publish(copy->name) != 0)
        failWith(project_text::cannotCommit);
    setCopyAttributes(copy->temporary.reader(), item.modified);
    syncFolder(copy->folder.get());
    return copy->digest;
}

std::string VerifiedCopier::copy(const ProjectPlanItem& item, const FileUrl& root,
                                 const ByteProgress& byteProgress) {
    return finish(begin(item, root, byteProgress));
}

}  // namespace morvane
