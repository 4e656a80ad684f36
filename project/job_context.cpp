#include "project/job_context.h"

#include <stdexcept>

#include "platform/data_folder.h"
#include "project/project_errors.h"
#include "support/path_text.h"

namespace morvane {

std::string JobContext::storeFolder() const {
    if (!storeFolder_.empty())
        return storeFolder_;
    try {
        return joinPath(userDataFolder(), storeFolderName);
    } catch (const std::runtime_error&) {
        return {};
    }
}

void JobContext::throwIfCancelled() const {
    if (isCancelled())
        throw ProjectCoreError::cancelled();
}

}  // namespace morvane
