#include "project/source_walk.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/package_types.h"
#include "project/folder_names.h"
#include "project/project_errors.h"
#include "project/project_template.h"
#include "project/safe_open.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

bool isFcpLibraryName(std::string_view name) {
    return lowerCased(name).ends_with(".fcpbundle");
}

SourceWalk::SourceWalk(JobContext& context, const std::string& folder, std::string project)
    : context_(context), project_(std::move(project)) {
    auto entries = list(folder);
    if (!entries)
        failWith(project_text::cannotScan);
    frames_.push_back({folder, {}, *std::move(entries)});
}

std::vector<SourceWalk::Entry> SourceWalk::next() {
    std::vector<Entry> found;
    while (!frames_.empty() && found.size() < batchSize) {
        Frame& frame = frames_.back();
        if (frame.next == frame.entries.size()) {
            frames_.pop_back();
            continue;
        }
        context_.throwIfCancelled();
        const Named entry = std::move(frame.entries[frame.next++]);
        visit(entry, found);
    }
    return found;
}

/// The entries of a folder in the byte order of their names; nothing when it cannot be listed. Entries
/// that vanish meanwhile are left out.
std::optional<std::vector<SourceWalk::Named>> SourceWalk::list(const std::string& path) {
    const UniqueFd folder = openFolder(path);
    auto names = folderNames(folder);
    if (!names)
        return std::nullopt;
    std::vector<Named> entries;
    entries.reserve(names->size());
    for (std::string& name : *names) {
        Named entry{std::move(name), {}};
        if (::fstatat(folder.get(), entry.name.c_str(), &entry.status, AT_SYMLINK_NOFOLLOW) == 0)
            entries.push_back(std::move(entry));
        else if (errno != ENOENT)
            return std::nullopt;
    }
    return entries;
}

bool SourceWalk::isPassedOver(const std::string& path, const Named& entry) const {
    if (S_ISDIR(entry.status.st_mode) && (isSystemFolderName(entry.name) || hasPackageExtension(entry.name)))
        return true;
    return isFcpLibraryName(entry.name) || isAtOrBelow(path, project_);
}

void SourceWalk::visit(const Named& entry, std::vector<Entry>& found) {
    std::string path = joinPath(frames_.back().path, entry.name);
    if (isPassedOver(path, entry))
        return;
    std::string relative = frames_.back().safeRelative + safeComponent(entry.name);
    if (S_ISDIR(entry.status.st_mode)) {
        if (auto entries = list(path))
            frames_.push_back({std::move(path), std::move(relative) + "/", *std::move(entries)});
        else
            found.push_back({Entry::Kind::UnreadableFolder, std::move(path), std::move(relative), {}});
    } else if (S_ISREG(entry.status.st_mode) && !isSystemFileName(entry.name)) {
        found.push_back(
            {Entry::Kind::File, std::move(path), std::move(relative), attributesOf(entry.status)});
    }
}

}  // namespace morvane
