// The manifest file and the marker of a project folder: names, limits, reading, the lock.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "project/project_records.h"
#include "support/unique_fd.h"

namespace morvane {

inline constexpr std::string_view manifestFilename = "MORVANE项目清单.json";
inline constexpr std::string_view markerFilename = ".morvane-project-id";
/// Bytes; a larger manifest is refused before decoding.
inline constexpr std::size_t manifestReadLimit = 33'554'432;

/// Reads the manifest at `url` with every check in the described order; afterwards the records match
/// the items, the identifiers are distinct, every destination is safe, the project folder is the one
/// that holds the file, and its marker carries the plan's id. Changes nothing, not even dates of
/// access. Throws ProjectCoreError or std::system_error. Any thread, also while another
/// process works on the project.
ProjectManifest readManifest(const FileUrl& url);

/// The right to work on a project: an advisory lock on its marker file, held while alive (also
/// against other holders in this process), gone with the process however it ends.
class ProjectLock {
public:
    /// Writes the marker (the id, no line break) into the open folder `root`, never over an existing
    /// file, and locks it. Throws std::system_error.
    static ProjectLock create(int root, const std::string& planID);
    /// Locks the marker of an existing project. Throws ProjectCoreError project_text::busy when
    /// someone holds it, project_text::markerMismatch when there is none.
    static ProjectLock acquire(int root);

private:
    explicit ProjectLock(UniqueFd marker);

    UniqueFd marker_;
};

}  // namespace morvane
