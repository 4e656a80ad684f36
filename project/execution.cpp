#include "project/execution.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include "platform/volume_space.h"
#include "project/fcpxml.h"
#include "project/file_hash.h"
#include "project/folder_sync.h"
#include "project/manifest.h"
#include "project/manifest_writer.h"
#include "project/planning.h"
#include "project/project_errors.h"
#include "project/project_template.h"
#include "project/safe_open.h"
#include "project/safe_paths.h"
#include "project/side_task.h"
#include "project/stale_files.h"
#include "project/verified_copy.h"
#include "support/path_text.h"
#include "support/system_error.h"

namespace morvane {

namespace {

constexpr std::int64_t largestNumber = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t spaceReserve = 1'048'576;  // bytes, room for the manifest
/// Bytes; verifying a larger file takes so long that a manifest made before would carry an old date.
constexpr std::int64_t largestPreparedFor = 16'777'216;
/// Bytes; beginning a larger file ahead would gain little.
constexpr std::int64_t largestBegunAhead = 16'777'216;
constexpr std::int64_t largestTotal = largestNumber - spaceReserve - 1;

void checkPlan(const ProjectPlan& plan) {
    const bool isSound = validate(plan.request).path == plan.rootURL.path &&
                         std::all_of(plan.items.begin(), plan.items.end(), [](const ProjectPlanItem& item) {
                             return safeRelative(item.relativeDestination) && item.size >= 0;
                         });
    if (!plan.rootURL.isFile() || !isSound)
        failWith(project_text::invalidPlan);
}

/// Bytes still to copy: all items, or those whose record is not verified.
std::int64_t neededBytes(const ProjectPlan& plan, const std::vector<ProjectFileRecord>* records) {
    std::int64_t sum = 0;
    for (std::size_t index = 0; index < plan.items.size(); ++index) {
        if (records && (*records)[index].state == ProjectFileState::verified)
            continue;
        if (__builtin_add_overflow(sum, plan.items[index].size, &sum) || sum > largestTotal)
            failWith(project_text::invalidTotal);
    }
    return sum;
}

void checkSpace(const ProjectPlan& plan, std::int64_t needed) {
    const auto available = availableBytes(std::string(parentPath(plan.rootURL.path)));
    if (available && *available < needed + spaceReserve)
        failWith(project_text::notEnoughSpace);
}

/// Makes the project folder, which must not exist, and returns it opened.
UniqueFd makeProjectFolder(const FileUrl& root) {
    const UniqueFd parent = openFolder(parentPath(root.path));
    const std::string name(lastPathComponent(root.path));
    if (!parent || ::mkdirat(parent.get(), name.c_str(), 0755) != 0)
        failWith(project_text::cannotMakeProject);
    UniqueFd folder(::openat(parent.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder)
        failWith(project_text::cannotMakeProject);
    syncFolder(parent.get());
    return folder;
}

ProjectManifest newManifest(const ProjectPlan& plan) {
    ProjectManifest manifest;
    manifest.plan = plan;
    manifest.updatedAt = std::time(nullptr);
    manifest.warnings = plan.warnings;
    manifest.files.reserve(plan.items.size());
    for (const auto& item : plan.items)
        manifest.files.push_back({item.id, ProjectFileState::pending, {}, {}});
    return manifest;
}

/// One run over one project folder: steps 5 to 9 of the procedure, for new and resumed projects.
class Run {
public:
    enum class Kind { New, Resumed };

    Run(JobContext& context, ProjectManifest manifest, UniqueFd root, Kind kind)
        : context_(context),
          kind_(kind),
          manifest_(std::move(manifest)),
          root_(std::move(root)),
          writer_(root_.get()),
          copier_(context),
          hasher_(context) {
        progress_.totalFiles = static_cast<std::int64_t>(manifest_.plan.items.size());
        for (const auto& item : manifest_.plan.items)
            if (__builtin_add_overflow(progress_.totalBytes, item.size, &progress_.totalBytes))
                progress_.totalBytes = largestNumber;
    }

    ProjectResult perform() {
        writer_.persist(manifest_);
        for (std::size_t index = 0; index < manifest_.files.size() && !isCancelled_; ++index)
            processItem(index);
        beginning_.wait();
        ahead_.reset();
        const bool wroteHandOff = !isCancelled_ && manifest_.plan.request.createFCP;
        if (wroteHandOff)
            handOff();
        if (wroteHandOff)
            writer_.persist(manifest_);
        else
            writer_.persist(manifest_, std::nullopt);
        reportEnd();
        return result();
    }

private:
    const ProjectPlanItem& item(std::size_t index) const { return manifest_.plan.items[index]; }
    FileUrl finalFile(std::size_t index) const {
        return fileLocation(joinPath(manifest_.plan.rootURL.path, item(index).relativeDestination));
    }
    bool finalFileExists(std::size_t index) const {
        struct stat status {};
        return ::lstat(finalFile(index).path.c_str(), &status) == 0;
    }
    std::int64_t count(ProjectFileState state) const {
        return std::count_if(manifest_.files.begin(), manifest_.files.end(),
                             [state](const ProjectFileRecord& record) { return record.state == state; });
    }

    /// The project's path must still lead to the folder this run began with: not to another one that
    /// was mounted or moved there meanwhile.
    void checkFolder() const {
        struct stat named {};
        struct stat held {};
        const UniqueFd folder = openFolder(manifest_.plan.rootURL.path);
        if (!folder || ::fstat(folder.get(), &named) != 0 || ::fstat(root_.get(), &held) != 0 ||
            !isSameFile(named, held))
            failWith(project_text::projectChanged);
    }

    void processItem(std::size_t index);
    void checkVerified(std::size_t index);
    void adopt(std::size_t index);
    void completeAdopted(std::size_t index) const;
    void copyItem(std::size_t index);
    std::shared_ptr<VerifiedCopier::Begun> begunCopy(std::size_t index);
    void beginAhead(std::size_t index);
    void prepareNextWrites(std::size_t index, const std::string& digest);
    void countAsDone(std::size_t index);
    void recordStop(std::size_t index);
    void recordFailure(std::size_t index, const char* description);
    void handOff();
    void reportEnd() const;
    ProjectResult result() const;

    JobContext& context_;
    const Kind kind_;
    ProjectManifest manifest_;
    const UniqueFd root_;
    ManifestWriter writer_;
    VerifiedCopier copier_;
    FileHasher hasher_;
    ProjectProgress progress_;
    bool isCancelled_ = false;
    std::optional<FileUrl> fcpxmlURL_;

    /// A copy begun before its turn.
    struct Ahead {
        std::size_t index;
        std::vector<std::int64_t> reports;  ///< counts of its bytes, not yet reported
        std::shared_ptr<VerifiedCopier::Begun> copy;
    };
    std::optional<Ahead> ahead_;  ///< belongs to beginning_ while that runs
    SideTask beginning_;
};

void Run::processItem(std::size_t index) {
    ProjectFileRecord& record = manifest_.files[index];
    try {
        context_.throwIfCancelled();
        checkFolder();
        if (record.state == ProjectFileState::verified && record.sha256)
            checkVerified(index);
        else if (kind_ == Kind::Resumed && finalFileExists(index))
            adopt(index);
        else
            copyItem(index);
    } catch (const ProjectCoreError& error) {
        if (error.isCancelled())
            recordStop(index);
        else
            recordFailure(index, error.what());
    } catch (const std::exception& error) {
        recordFailure(index, error.what());
    }
}

void Run::checkVerified(std::size_t index) {
    const FileUrl file = finalFile(index);
    bool isUnchanged = false;
    try {
        isUnchanged = attributes(file).size == item(index).size;
    } catch (const ProjectCoreError&) {
        // Gone, or no regular file any more: changed.
    }
    if (!isUnchanged || hasher_.hashFile(file) != manifest_.files[index].sha256)
        failWith(project_text::verifiedCopyChanged);
    countAsDone(index);
}

void Run::adopt(std::size_t index) {
    const ProjectPlanItem& planned = item(index);
    const FileAttributes source = attributes(planned.sourceURL);
    if (source.size != planned.size || isOtherDate(source.modified, planned.modified))
        failWith(project_text::sourceChangedSincePlan);
    std::string digest = hasher_.hashFile(planned.sourceURL);
    if ((planned.sourceHash && *planned.sourceHash != digest) || hasher_.hashFile(finalFile(index)) != digest)
        failWith(project_text::destinationDiffers);
    ProjectFileRecord& record = manifest_.files[index];
    completeAdopted(index);
    record.state = ProjectFileState::verified;
    record.sha256 = std::move(digest);
    record.error.reset();
    countAsDone(index);
    writer_.persist(manifest_, index);
}

/// The run that left this file may have died before it gave the file its date and mode, or before it
/// flushed the file, its name, or the folders made for it: what is recorded as verified has to survive a
/// power cut.
void Run::completeAdopted(std::size_t index) const {
    const std::string file = finalFile(index).path;
    const UniqueFd adopted = openRead(fileLocation(file));
    // The mode tells where a stop or a failure has replaced the record's state since; the state tells
    // where the file system keeps no modes.
    struct stat status {};
    const bool hasFirstMode =
        ::fstat(adopted.get(), &status) == 0 && (status.st_mode & 0777) == VerifiedCopier::unpublishedMode;
    if (hasFirstMode || manifest_.files[index].state == ProjectFileState::copying)
        setCopyAttributes(adopted.get(), item(index).modified);
    if (::fsync(adopted.get()) != 0)
        throwErrno();
    for (std::string_view folder = parentPath(file); isAtOrBelow(folder, manifest_.plan.rootURL.path);
         folder = parentPath(folder)) {
        const UniqueFd opened = openFolder(folder);
        if (!opened)
            failWith(project_text::projectChanged);
        syncFolder(opened.get());
    }
}

/// While this file is flushed and verified, the next one is read and written ahead of its turn.
void Run::copyItem(std::size_t index) {
    ProjectFileRecord& record = manifest_.files[index];
    record.state = ProjectFileState::copying;
    record.error.reset();
    writer_.persist(manifest_, index);
    auto begun = begunCopy(index);
    prepareNextWrites(index, VerifiedCopier::digest(*begun));
    beginAhead(index + 1);
    record.sha256 = copier_.finish(std::move(begun));
    record.state = ProjectFileState::verified;
    countAsDone(index);
    writer_.persist(manifest_, index);
}

/// The first half of a copy: what was begun ahead, or begun now. Its bytes are reported in either case.
std::shared_ptr<VerifiedCopier::Begun> Run::begunCopy(std::size_t index) {
    ProjectProgress progress = progress_;
    progress.message =
        std::string(project_text::copyingPrefix) + shownName(item(index).sourceURL.lastComponent());
    const auto report = [&](std::int64_t bytes) {
        progress.completedBytes = progress_.completedBytes + bytes;
        context_.report(progress);
    };
    beginning_.wait();
    const auto ahead = std::exchange(ahead_, std::nullopt);
    if (!ahead || ahead->index != index || !VerifiedCopier::stillHolds(*ahead->copy, manifest_.plan.rootURL))
        return copier_.begin(item(index), manifest_.plan.rootURL, report);
    for (const std::int64_t bytes : ahead->reports) {
        report(bytes);
        context_.throwIfCancelled();
    }
    return ahead->copy;
}

/// No record, progress or failure tells of this before its turn. Then it is used if all is as it was, and
/// the file begun anew otherwise.
void Run::beginAhead(std::size_t index) {
    if (index >= manifest_.files.size() || item(index).size > largestBegunAhead ||
        manifest_.files[index].state == ProjectFileState::verified ||
        (kind_ == Kind::Resumed && finalFileExists(index)))
        return;
    beginning_.start([this, index] {
        try {
            checkFolder();
            std::vector<std::int64_t> reports;
            auto copy = copier_.beginAhead(item(index), manifest_.plan.rootURL,
                                           [&](std::int64_t bytes) { reports.push_back(bytes); });
            if (copy)
                ahead_ = {index, std::move(reports), std::move(copy)};
        } catch (const std::exception&) {
            // A stop or a failure: its own turn will tell.
        }
    });
}

/// While the copy is flushed and verified, the manifests of what most likely comes next are, too: this
/// file verified, then the next one copying.
void Run::prepareNextWrites(std::size_t index, const std::string& digest) {
    if (item(index).size > largestPreparedFor)
        return;
    std::vector<ManifestWriter::Change> changes;
    changes.push_back({index, {item(index).id, ProjectFileState::verified, digest, std::nullopt}});
    if (index + 1 < manifest_.files.size()) {
        const ProjectFileRecord& next = manifest_.files[index + 1];
        changes.push_back({index + 1, {next.itemID, ProjectFileState::copying, next.sha256, std::nullopt}});
    }
    writer_.prepare(manifest_, changes);
}

void Run::countAsDone(std::size_t index) {
    ++progress_.completedFiles;
    progress_.completedBytes += item(index).size;
}

void Run::recordStop(std::size_t index) {
    isCancelled_ = true;
    ProjectFileRecord& record = manifest_.files[index];
    // Also a verified one: it was not checked again in this run. The next run compares its file with the
    // source and adopts it.
    record.state = ProjectFileState::cancelled;
    record.error = project_text::itemStopped;
    writer_.persist(manifest_, index);
}

void Run::recordFailure(std::size_t index, const char* description) {
    ProjectFileRecord& record = manifest_.files[index];
    record.state = ProjectFileState::failed;
    record.error = description;
    writer_.persist(manifest_, index);
}

void Run::handOff() {
    try {
        fcpxmlURL_ = makeXML(context_, manifest_.plan.rootURL, manifest_);
        manifest_.fcpxmlFilename = fcpxmlURL_->lastComponent();
    } catch (const ProjectCoreError& error) {
        isCancelled_ = error.isCancelled();
        if (!isCancelled_)
            manifest_.warnings.push_back(std::string(project_text::fcpxmlFailedPrefix) + error.what());
    } catch (const std::exception& error) {
        manifest_.warnings.push_back(std::string(project_text::fcpxmlFailedPrefix) + error.what());
    }
}

void Run::reportEnd() const {
    ProjectProgress end = progress_;
    end.message = isCancelled_
                      ? std::string(project_text::stopped)
                      : std::string(project_text::finishedPrefix) + std::to_string(end.completedFiles) +
                            std::string(project_text::finishedMiddle) +
                            std::to_string(count(ProjectFileState::failed)) +
                            std::string(project_text::finishedSuffix);
    context_.report(end, JobContext::Delivery::Always);
}

ProjectResult Run::result() const {
    ProjectResult result;
    result.rootURL = manifest_.plan.rootURL;
    result.manifestURL = result.rootURL.appending(manifestFilename, false);
    result.fcpxmlURL = fcpxmlURL_;
    result.copiedCount = count(ProjectFileState::verified);
    result.failedCount = count(ProjectFileState::failed);
    result.cancelled = isCancelled_;
    result.warnings = manifest_.warnings;
    return result;
}

}  // namespace

ProjectResult executeSynchronously(JobContext& context, const ProjectPlan& plan) {
    checkPlan(plan);
    checkSpace(plan, neededBytes(plan, nullptr));
    context.throwIfCancelled();
    UniqueFd root = makeProjectFolder(plan.rootURL);
    const ProjectLock lock = ProjectLock::create(root.get(), plan.id);
    for (const auto folder : templateFolders)
        ensureDirectory(plan.rootURL.appending(folder, true), plan.rootURL);
    return Run(context, newManifest(plan), std::move(root), Run::Kind::New).perform();
}

ProjectResult retrySynchronously(JobContext& context, const FileUrl& manifestURL) {
    UniqueFd root = openFolder(readManifest(manifestURL).plan.rootURL.path);
    if (!root)
        failWith(project_text::projectChanged);
    const ProjectLock lock = ProjectLock::acquire(root.get());
    // Read again: another run may have ended between the first reading and the lock.
    ProjectManifest manifest = readManifest(manifestURL);
    checkPlan(manifest.plan);
    const std::int64_t needed = neededBytes(manifest.plan, &manifest.files);
    removeStaleFiles(manifest.plan);
    checkSpace(manifest.plan, needed);
    manifest.fcpxmlFilename.reset();
    return Run(context, std::move(manifest), std::move(root), Run::Kind::Resumed).perform();
}

}  // namespace morvane
