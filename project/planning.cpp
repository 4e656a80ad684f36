#include "project/planning.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/package_types.h"
#include "project/duplicates.h"
#include "project/folder_names.h"
#include "project/manifest.h"
#include "project/project_errors.h"
#include "project/project_json.h"
#include "project/project_template.h"
#include "project/safe_open.h"
#include "project/safe_paths.h"
#include "project/side_task.h"
#include "project/source_walk.h"
#include "support/path_text.h"
#include "support/text_fold.h"
#include "support/uuid.h"

namespace morvane {

namespace {

constexpr std::size_t nameLimit = 180;  // bytes of UTF-8
/// From here on a manifest counts as near its reading limit: error texts still have to fit.
constexpr std::size_t manifestWarningSize = manifestReadLimit - manifestReadLimit / 16;

bool isValidName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.size() <= nameLimit && isValidUtf8(name) &&
           !hasUnsafeCharacter(name);
}

bool isSupportedEdit(const ProjectRequest& request) {
    constexpr std::array<std::int64_t, 5> rates{24, 25, 30, 50, 60};
    const auto isSupportedSide = [](std::int64_t side) {
        return side % 2 == 0 && side >= 16 && side <= 8192;
    };
    return std::find(rates.begin(), rates.end(), request.frameRate) != rates.end() &&
           isSupportedSide(request.width) && isSupportedSide(request.height);
}

bool isInFcpLibrary(std::string_view path) {
    const auto pieces = pathPieces(path);
    return std::any_of(pieces.begin(), pieces.end(), isFcpLibraryName);
}

/// One planning run: the plan as it grows and the names taken so far.
class Planner {
public:
    Planner(JobContext& context, const ProjectRequest& request, FileUrl root) : context_(context) {
        plan_.id = newUuid();
        plan_.request = request;
        plan_.rootURL = std::move(root);
    }

    ProjectPlan run() {
        for (const FileUrl& source : plan_.request.sources)
            planSource(source);
        if (plan_.items.empty())
            failWith(project_text::nothingToOrganize);
        findDuplicates(context_, plan_);
        if (expectedManifestSize(plan_) >= manifestWarningSize)
            warn(project_text::manifestNearLimit);
        return std::move(plan_);
    }

private:
    /// How the files below one walked folder are planned.
    struct Walk {
        bool isCameraCard;
        std::string top;  ///< safe name of the walked folder
    };

    void warn(std::string_view prefix, std::string_view tail = {}) {
        plan_.warnings.push_back(std::string(prefix).append(tail));
    }

    void planSource(const FileUrl& source);
    void planFolder(const FileUrl& folder);
    void walkFolder(const FileUrl& folder, const Walk& walk);
    void planEntries(const std::vector<SourceWalk::Entry>& entries, const Walk& walk);
    void add(const FileUrl& file, const FileAttributes& attributes, const Walk* walk,
             const std::string& safeRelativePath);

    JobContext& context_;
    ProjectPlan plan_;
    ReservedNames reserved_;
    ProjectProgress progress_;
};

void Planner::planSource(const FileUrl& source) {
    context_.throwIfCancelled();
    const std::string name = shownName(source.lastComponent());
    if (!source.isFile())
        return warn(project_text::skippedNonLocalPrefix, name);
    struct stat status {};
    const bool isKnown = ::lstat(source.path.c_str(), &status) == 0;
    if (isKnown && S_ISLNK(status.st_mode))
        return warn(project_text::skippedLinkPrefix, name);
    const bool isFolder = isKnown && S_ISDIR(status.st_mode);
    const FileUrl real = canonical(source, isFolder ? LocationKind::Folder : LocationKind::File);
    if (isInFcpLibrary(real.path))
        return warn(project_text::skippedFcpLibraryPrefix, name);
    if (isAtOrBelow(real.path, plan_.rootURL.path))
        return warn(project_text::skippedTarget);
    if (isFolder)
        return planFolder(real);
    if (S_ISREG(status.st_mode))
        add(real, attributes(real), nullptr, safeComponent(real.lastComponent()));
}

void Planner::planFolder(const FileUrl& folder) {
    const std::string name = folder.lastComponent();
    const bool isCard = cardFolder(folder);
    if (!isCard && hasPackageExtension(name))
        return warn(project_text::skippedPackagePrefix, shownName(name));
    if (isCard)
        warn(shownName(name), project_text::cameraCardSuffix);
    walkFolder(folder, {isCard, safeComponent(name)});
}

/// The walk goes on beside the planning of what it has found.
void Planner::walkFolder(const FileUrl& folder, const Walk& walk) {
    SourceWalk source(context_, folder.path, plan_.rootURL.path);
    std::vector<SourceWalk::Entry> found = source.next();
    std::vector<SourceWalk::Entry> following;
    SideTask walking;
    while (found.size() == SourceWalk::batchSize) {
        walking.start([&] { following = source.next(); });
        planEntries(found, walk);
        walking.wait();
        std::swap(found, following);
    }
    planEntries(found, walk);
}

void Planner::planEntries(const std::vector<SourceWalk::Entry>& entries, const Walk& walk) {
    for (const SourceWalk::Entry& entry : entries) {
        context_.throwIfCancelled();
        if (entry.kind == SourceWalk::Entry::Kind::File)
            add(fileLocation(entry.path), entry.attributes, &walk, entry.safeRelative);
        else
            warn(project_text::skippedUnreadablePrefix, shownName(lastPathComponent(entry.path)));
    }
}

void Planner::add(const FileUrl& file, const FileAttributes& attributes, const Walk* walk,
                  const std::string& safeRelativePath) {
    const Classification classification = folderAndCategory(file);
    const bool isCard = walk && walk->isCameraCard;
    std::string wanted(isCard ? cameraCardFolder : classification.folder);
    if (walk)
        wanted.append("/").append(walk->top);
    wanted.append("/").append(safeRelativePath);

    ProjectPlanItem item;
    item.id = newUuid();
    item.sourceURL = file;
    item.relativeDestination = reserved_.unique(wanted);
    item.category = classification.category;
    item.size = attributes.size;
    item.modified = attributes.modified;
    item.isCameraCard = isCard;
    plan_.items.push_back(std::move(item));

    progress_.completedFiles = static_cast<std::int64_t>(plan_.items.size());
    progress_.completedBytes += attributes.size;
    progress_.message = std::string(project_text::analysingPrefix) + std::to_string(plan_.items.size()) +
                        std::string(project_text::analysingSuffix);
    context_.report(progress_);
}

}  // namespace

FileUrl validate(const ProjectRequest& request) {
    const std::string name = trimmed(request.name);
    if (!isValidName(name))
        failWith(project_text::invalidName);
    if (!request.parentURL.isFile())
        failWith(project_text::parentNotLocal);
    const FileUrl parent = canonical(request.parentURL, LocationKind::Folder);
    struct stat status {};
    if (::stat(parent.path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        failWith(project_text::parentNotFolder);
    if (!isSupportedEdit(request))
        failWith(project_text::unsupportedEdit);
    return parent.appending(name, true);
}

bool cardFolder(const FileUrl& folder) {
    if (isCameraStructureName(folder.lastComponent()))
        return true;
    const auto names = folderNames(openFolder(folder.path));
    return names && std::any_of(names->begin(), names->end(), isCameraStructureName);
}

ProjectPlan planSynchronously(JobContext& context, const ProjectRequest& request) {
    FileUrl root = validate(request);
    struct stat status {};
    if (::lstat(root.path.c_str(), &status) == 0)
        failWith(project_text::projectExists);
    return Planner(context, request, std::move(root)).run();
}

}  // namespace morvane
