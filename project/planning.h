// Planning: what a run would copy where. Reads attributes, names and (for duplicate candidates)
// content; creates and changes nothing on any disk.
#pragma once

#include "project/job_context.h"
#include "project/project_records.h"

namespace morvane {

/// Checks the request in the described order and returns the location of the project folder: the
/// real path of `parentURL` plus the trimmed name. Throws ProjectCoreError.
FileUrl validate(const ProjectRequest& request);

/// True when the folder's own name or a direct child's name, in upper case, is one of the six
/// camera-structure names. A folder that cannot be listed counts as having no children.
bool cardFolder(const FileUrl& folder);

/// The whole dry run: validation, the walk of every source in the request's order, classification,
/// unique destinations, duplicate detection. Entries of one folder come in the byte order of their
/// names, a folder's content where its name stands, so that a plan can be repeated. Symbolic links,
/// packages, Final Cut Pro libraries, the project folder itself and everything that is no regular
/// file are passed over; a folder below a source that cannot be listed adds a warning. Progress:
/// completedFiles is the number of files planned so far, completedBytes their bytes, totals are 0 while
/// walking; while checking duplicates they count items and bytes of the plan. Throws ProjectCoreError (also
/// its cancelled case). Any thread.
ProjectPlan planSynchronously(JobContext& context, const ProjectRequest& request);

}  // namespace morvane
