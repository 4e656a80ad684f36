// Finding planned files with the same content. Advisory: nothing is dropped, everything is copied.
#pragma once

#include "project/job_context.h"
#include "project/project_records.h"

namespace morvane {

/// Fills `sourceHash` and `duplicateOf` of the plan's items and adds the one warning when there are
/// duplicates. Sizes that nobody shares are never read; files of one size are told apart by their
/// first 4 KiB, then by their fast fingerprint (file_hash.h), and only what agrees in both is read
/// whole. Throws ProjectCoreError (also its cancelled case) or std::system_error.
void findDuplicates(JobContext& context, ProjectPlan& plan);

}  // namespace morvane
