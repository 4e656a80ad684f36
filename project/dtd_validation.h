// Checking a hand-off file against Final Cut Pro's document type definition, which this program does
// not contain: it belongs to Final Cut Pro and is looked for where its owner may have put it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "project/job_context.h"

namespace morvane {

inline constexpr const char* dtdName = "FCPXMLv1_10.dtd";
inline constexpr const char* installedDtd =
    "/Applications/Final Cut Pro.app/Contents/Frameworks/Interchange.framework/Versions/A/Resources/"
    "FCPXMLv1_10.dtd";

/// Where the definition is looked for, in order: Final Cut Pro itself, the store folder of `context`,
/// the folder "morvane" of every shared data folder.
std::vector<std::string> dtdPlaces(const JobContext& context);

/// The first place that holds a regular file.
std::optional<std::string> findDtd(const JobContext& context);

/// Runs /usr/bin/xmllint on the document at `path` against the definition at `dtd` (both absolute).
/// Returns when the document is valid; throws ProjectCoreError: the cancelled case when the user
/// stopped the job meanwhile, dtdViolationPrefix + xmllint's text when it is not valid, and
/// validatorPrefix + the system's text when xmllint cannot be started. The job's thread.
void validateAgainstDtd(const JobContext& context, const std::string& dtd, const std::string& path);

}  // namespace morvane
