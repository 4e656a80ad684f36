// The records of the project organizer: plain values that every stage passes on by copy. Their JSON
// form is project_json.h's; field names are the JSON keys.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/file_url.h"

namespace morvane {

/// What the user asked for.
struct ProjectRequest {
    std::string name;              ///< as typed; UTF-8
    FileUrl parentURL;             ///< folder in which the project folder is created
    std::vector<FileUrl> sources;  ///< in the order the user added them
    bool createFCP = true;         ///< make an FCPXML hand-off file after copying
    std::int64_t frameRate = 25;   ///< frames per second: 24, 25, 30, 50 or 60
    std::int64_t width = 1920;     ///< pixels, even, 16 to 8192
    std::int64_t height = 1080;    ///< pixels, even, 16 to 8192
    bool operator==(const ProjectRequest&) const = default;
};

/// One file to be copied.
struct ProjectPlanItem {
    std::string id;                   ///< canonical upper-case UUID text; the item's identity
    FileUrl sourceURL;                ///< exact bytes of the source's real path
    std::string relativeDestination;  ///< below the project root, "/"-separated, valid UTF-8
    std::string category;  ///< "拍摄素材", "同期声", "音乐", "音效", "图形", "字幕" or "文案资料"
    std::int64_t size = 0;                   ///< bytes, at planning time
    double modified = 0;                     ///< seconds since 1970-01-01 UTC, at planning time
    bool isCameraCard = false;               ///< copied as part of a camera structure kept whole
    std::optional<std::string> duplicateOf;  ///< source path of the first item with the same content
    std::optional<std::string> sourceHash;   ///< SHA-256 of the source, when planning read it whole
    bool operator==(const ProjectPlanItem&) const = default;
};

struct ProjectPlan {
    std::string id;                      ///< canonical upper-case UUID text
    ProjectRequest request;              ///< what the plan was made from
    FileUrl rootURL;                     ///< the project folder to be created
    std::vector<ProjectPlanItem> items;  ///< in plan order
    std::vector<std::string> warnings;   ///< shown to the user before copying
    bool operator==(const ProjectPlan&) const = default;
};

enum class ProjectFileState { pending, copying, verified, failed, cancelled };

/// The raw text of a state, as it stands in the manifest ("pending", ...).
std::string_view rawText(ProjectFileState state);
/// The state of a raw text; nothing for any other spelling.
std::optional<ProjectFileState> fileState(std::string_view rawText);

/// The outcome of one plan item.
struct ProjectFileRecord {
    std::string itemID;  ///< id of the plan item
    ProjectFileState state = ProjectFileState::pending;
    std::optional<std::string> sha256;  ///< of the verified copy, lower-case hexadecimal
    std::optional<std::string> error;   ///< text for the user; failed and cancelled records
    bool operator==(const ProjectFileRecord&) const = default;
};

/// The content of the manifest file.
struct ProjectManifest {
    std::int64_t schemaVersion = 1;
    std::int64_t revision = 0;  ///< number of times the manifest has been written
    ProjectPlan plan;
    std::int64_t updatedAt = 0;                 ///< time of the last write, seconds since 1970-01-01 UTC
    std::vector<ProjectFileRecord> files;       ///< one per plan item, in plan order
    std::vector<std::string> warnings;          ///< the plan's and those added while executing
    std::optional<std::string> fcpxmlFilename;  ///< last path component of the published hand-off file
    bool operator==(const ProjectManifest&) const = default;
};

/// A report for the screen while work runs.
struct ProjectProgress {
    std::int64_t completedFiles = 0;
    std::int64_t totalFiles = 0;      ///< 0 while unknown
    std::int64_t completedBytes = 0;  ///< copied and verified
    std::int64_t totalBytes = 0;
    std::string message;  ///< one line, UTF-8
    bool operator==(const ProjectProgress&) const = default;
};

/// The outcome handed to whoever ran the job.
struct ProjectResult {
    FileUrl rootURL;
    FileUrl manifestURL;
    std::optional<FileUrl> fcpxmlURL;  ///< when a hand-off file was published
    std::int64_t copiedCount = 0;      ///< records copied and verified
    std::int64_t failedCount = 0;
    bool cancelled = false;
    std::vector<std::string> warnings;
    bool operator==(const ProjectResult&) const = default;
};

}  // namespace morvane
