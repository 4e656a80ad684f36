// Executing a plan: project folder, verified copies, a manifest written at every state change, the
// hand-off file. Synchronous; ProjectWorker and the command line both call these.
#pragma once

#include "project/job_context.h"
#include "project/project_records.h"

namespace morvane {

/// Makes the project of a plan: checks, free space, project folder (which must not exist), marker,
/// template folders, manifest revision 1, then one verified copy per item in plan order with the
/// manifest persisted at every state change, and the hand-off file when the request asks for it.
/// A failure of one file is recorded and the run goes on; a stop by the user ends the run normally
/// with `cancelled` set (before the folder exists it throws the cancelled case instead).
/// The last progress report is always delivered. While it runs the marker is locked: another
/// process on this project is told project_text::busy. Throws ProjectCoreError or std::system_error
/// for what ends the whole run. Any thread; one run per project folder.
ProjectResult executeSynchronously(JobContext& context, const ProjectPlan& plan);

/// Resumes the project of a manifest: readManifest's checks (manifest.h), the marker's lock,
/// removal of temporary files a dead run left in this project, then the run as above: verified
/// records are checked again, equal files that stand without a verified record are adopted, the
/// rest is copied. A refused folder is not modified in any way.
ProjectResult retrySynchronously(JobContext& context, const FileUrl& manifestURL);

}  // namespace morvane
