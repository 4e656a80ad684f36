#include "project/stale_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>
#include <string_view>
#include <unordered_set>

#include "project/folder_names.h"
#include "project/project_template.h"
#include "project/safe_open.h"
#include "project/temporary_file.h"
#include "support/path_text.h"

namespace morvane {

namespace {

void removeFrom(const std::string& folderPath, std::string_view relativeFolder,
                const std::unordered_set<std::string_view>& planned) {
    const UniqueFd folder = openFolder(folderPath);
    const auto names = folderNames(folder);
    if (!names)
        return;
    for (const auto& name : *names) {
        struct stat status {};
        if (isTemporaryName(name) && !planned.contains(joinPath(relativeFolder, name)) &&
            ::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode))
            static_cast<void>(::unlinkat(folder.get(), name.c_str(), 0));
    }
}

}  // namespace

void removeStaleFiles(const ProjectPlan& plan) {
    std::unordered_set<std::string_view> planned;
    std::set<std::string_view> folders{"", templateFolders[0]};  // of the manifest and of the hand-off
    for (const auto& item : plan.items) {
        planned.insert(item.relativeDestination);
        folders.insert(parentPath(item.relativeDestination));
    }
    for (const auto folder : folders)
        removeFrom(folder.empty() ? plan.rootURL.path : joinPath(plan.rootURL.path, folder),
                   std::string(folder), planned);
}

}  // namespace morvane
