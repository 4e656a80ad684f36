#include "tests/project/mount_fixture.h"

#include <sys/mount.h>

#include <cerrno>
#include <utility>

#include "platform/run_process.h"
#include "support/system_error.h"

namespace morvane::test {

Mount::Mount(std::string folder, std::string problem)
    : folder_(std::move(folder)), problem_(std::move(problem)) {}

Mount::Mount(Mount&& other) noexcept
    : folder_(std::exchange(other.folder_, {})), problem_(std::move(other.problem_)) {}

Mount::~Mount() {
    if (!folder_.empty() && problem_.empty())
        ::umount2(folder_.c_str(), MNT_DETACH);
}

Mount Mount::tmpfs(const std::string& folder, std::size_t bytes) {
    const std::string options = "size=" + std::to_string(bytes);
    if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0)
        return {folder, {}};
    return {folder, "no tmpfs can be mounted here: " + systemErrorText(errno)};
}

Mount Mount::bindfs(const std::string& source, const std::string& folder) {
    try {
        const ProcessOutcome outcome = runProcess("/usr/bin/bindfs", {source, folder}, [] { return false; });
        if (outcome.exitStatus == 0)
            return {folder, {}};
        return {folder, "bindfs failed here: " + outcome.standardError};
    } catch (const std::exception& error) {
        return {folder, std::string("bindfs cannot be started here: ") + error.what()};
    }
}

}  // namespace morvane::test
