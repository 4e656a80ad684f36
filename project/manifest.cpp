#include "project/manifest.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <unordered_set>
#include <utility>

#include "project/file_hash.h"
#include "project/folder_sync.h"
#include "project/planning.h"
#include "project/project_errors.h"
#include "project/project_json.h"
#include "project/safe_open.h"
#include "project/safe_paths.h"
#include "support/json_read.h"
#include "support/path_text.h"
#include "support/system_error.h"

namespace morvane {

namespace {

/// At most `limit` bytes from the file's beginning.
std::string readUpTo(int file, std::size_t limit) {
    std::string text;
    struct stat status {};
    if (::fstat(file, &status) == 0 && status.st_size >= 0)
        text.reserve(std::min(limit, static_cast<std::size_t>(status.st_size) + 1));
    char block[65'536];
    while (text.size() < limit) {
        const std::size_t count = readSome(file, block, std::min(sizeof block, limit - text.size()));
        if (count == 0)
            break;
        text.append(block, count);
    }
    return text;
}

ProjectManifest decoded(const std::string& text) {
    try {
        return decodeManifest(text);
    } catch (const JsonError& error) {
        failWith(project_text::manifestDamagedPrefix, error.what());
    }
}

bool hasMatchingRecords(const ProjectManifest& manifest) {
    const auto& items = manifest.plan.items;
    if (manifest.schemaVersion != 1 || manifest.files.size() != items.size())
        return false;
    std::unordered_set<std::string_view> ids;
    for (std::size_t index = 0; index < items.size(); ++index)
        if (manifest.files[index].itemID != items[index].id || !ids.insert(items[index].id).second ||
            !safeRelative(items[index].relativeDestination))
            return false;
    return true;
}

/// Whether the project folder is the one its request names and the one that holds this manifest.
bool standsInItsFolder(const ProjectPlan& plan, const FileUrl& manifest) {
    try {
        return plan.rootURL.isFile() && validate(plan.request).path == plan.rootURL.path &&
               canonical(plan.rootURL, LocationKind::Folder).appending(manifestFilename, false).path ==
                   manifest.path;
    } catch (const ProjectCoreError&) {
        return false;
    }
}

bool hasMarker(const ProjectPlan& plan) {
    try {
        const UniqueFd marker = openRead(plan.rootURL.appending(markerFilename, false));
        return readUpTo(marker.get(), plan.id.size() + 1) == plan.id;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

ProjectManifest readManifest(const FileUrl& url) {
    struct stat status {};
    if (url.isFile() && ::lstat(url.path.c_str(), &status) == 0 && S_ISLNK(status.st_mode))
        failWith(project_text::manifestIsLink);
    const FileUrl location = canonical(url, LocationKind::File);
    std::string text;
    {
        const UniqueFd file = openRead(location);
        text = readUpTo(file.get(), manifestReadLimit + 1);
    }
    if (text.size() > manifestReadLimit)
        failWith(project_text::manifestTooLarge);
    ProjectManifest manifest = decoded(text);
    if (!hasMatchingRecords(manifest) || !standsInItsFolder(manifest.plan, location))
        failWith(project_text::manifestMismatch);
    if (!hasMarker(manifest.plan))
        failWith(project_text::markerMismatch);
    return manifest;
}

ProjectLock::ProjectLock(UniqueFd marker) : marker_(std::move(marker)) {
    if (::flock(marker_.get(), LOCK_EX | LOCK_NB) == 0)
        return;
    if (errno == EWOULDBLOCK)
        failWith(project_text::busy);
    throwErrno();
}

ProjectLock ProjectLock::create(int root, const std::string& planID) {
    UniqueFd marker(::openat(root, std::string(markerFilename).c_str(),
                             O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!marker)
        throwErrno();
    writeAll(marker.get(), planID.data(), planID.size());
    if (::fsync(marker.get()) != 0)
        throwErrno();
    return ProjectLock(std::move(marker));
}

ProjectLock ProjectLock::acquire(int root) {
    const std::string name(markerFilename);
    // Some network file systems lock only what is open for writing.
    UniqueFd marker(::openat(root, name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!marker)
        marker.reset(::openat(root, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!marker)
        failWith(project_text::markerMismatch);
    return ProjectLock(std::move(marker));
}

}  // namespace morvane
