#include "project/verification.h"

#include <sys/stat.h>

#include <exception>

#include "project/file_hash.h"
#include "project/manifest.h"
#include "project/project_errors.h"
#include "support/path_text.h"

namespace morvane {

namespace {

/// Whether the file can be read and has this digest; only a stop by the user is thrown on.
bool hasContent(FileHasher& hasher, const FileUrl& file, const std::string& digest,
                const FileHasher::OnRead& onRead) {
    try {
        return hasher.hashFile(file, onRead) == digest;
    } catch (const ProjectCoreError& error) {
        if (error.isCancelled())
            throw;
        return false;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

VerifyReport verifyProject(JobContext& context, const FileUrl& manifestURL) {
    const ProjectManifest manifest = readManifest(manifestURL);
    FileHasher hasher(context);
    VerifyReport report;
    ProjectProgress progress;
    const auto isVerified = [&](std::size_t index) {
        return manifest.files[index].state == ProjectFileState::verified && manifest.files[index].sha256;
    };
    for (std::size_t index = 0; index < manifest.files.size(); ++index)
        if (isVerified(index)) {
            ++progress.totalFiles;
            progress.totalBytes += manifest.plan.items[index].size;
        }
    for (std::size_t index = 0; index < manifest.files.size(); ++index) {
        if (!isVerified(index))
            continue;
        const ProjectPlanItem& item = manifest.plan.items[index];
        const FileUrl file = fileLocation(joinPath(manifest.plan.rootURL.path, item.relativeDestination));
        const std::int64_t before = progress.completedBytes;
        progress.message = std::string(project_text::copyingPrefix) + shownName(file.lastComponent());
        ++report.checked;
        struct stat status {};
        if (::lstat(file.path.c_str(), &status) != 0) {
            report.missing.push_back(item.relativeDestination);
        } else if (!hasContent(hasher, file, *manifest.files[index].sha256, [&](std::int64_t bytes) {
                       progress.completedBytes = before + bytes;
                       context.report(progress);
                   })) {
            report.changed.push_back(item.relativeDestination);
        }
        ++progress.completedFiles;
        progress.completedBytes = before + item.size;
    }
    context.report(progress, JobContext::Delivery::Always);
    return report;
}

}  // namespace morvane
