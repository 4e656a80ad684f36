// Checking the copies of a finished project against its manifest, without changing anything.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "project/job_context.h"

namespace morvane {

struct VerifyReport {
    std::int64_t checked = 0;          ///< records in state verified
    std::vector<std::string> changed;  ///< relativeDestination of copies that differ or cannot be read
    std::vector<std::string> missing;  ///< relativeDestination of copies that are not there
};

/// Hashes every copy that the manifest records as verified, in plan order. Progress counts files and
/// bytes as in a run, with the same text. Throws what readManifest throws, and ProjectCoreError's
/// cancelled case. Any thread.
VerifyReport verifyProject(JobContext& context, const FileUrl& manifestURL);

}  // namespace morvane
