// The FCPXML 1.10 hand-off file: the project's plain media sorted into five events, and an empty main
// edit.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "project/job_context.h"
#include "project/media_probe.h"
#include "project/project_records.h"

namespace morvane {

/// `text` as the content of an XML attribute in double quotes: "&", the double quote, "<", ">", line
/// feed and carriage return are replaced, the apostrophe stays.
std::string escaped(std::string_view text);

/// The whole document of the project at `root`; `media` are the probed copies in plan order, their
/// numbers are their places in it. Pure; UTF-8.
std::string fcpxmlDocument(const FileUrl& root, const ProjectRequest& request,
                           const std::vector<Media>& media);

/// Probes the verified copies, writes the document under a new name into the project's first folder,
/// and leaves it there only when it is valid. Returns its location. May add one warning to
/// `manifest.warnings` (files that only have a verified copy). Throws ProjectCoreError; no file is left
/// behind then. The job's thread.
FileUrl makeXML(JobContext& context, const FileUrl& root, ProjectManifest& manifest);

}  // namespace morvane
