// Writing the manifest at every state change without writing every record again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "project/manifest_copies.h"
#include "project/project_json.h"
#include "project/side_task.h"

namespace morvane {

/// Writes the manifest of one project folder. At every moment a whole, valid manifest stands under its
/// name, and so it does after a power cut; each write adds 1 to `revision`. A change of one record is
/// written into an older copy (see ManifestCopies); more than two of those are only made where the disk
/// has room for them beside all that the plan still has to copy. Where the file system knows no exchange
/// of names or no leases, a complete new file replaces the manifest instead. One thread uses it at a time.
class ManifestWriter {
public:
    /// A record as it will stand in the manifest.
    struct Change {
        std::size_t index;
        ProjectFileRecord record;
    };

    /// `root`: the project folder's descriptor; must outlive this object.
    explicit ManifestWriter(int root) : copies_(root) {}
    ~ManifestWriter();
    ManifestWriter(const ManifestWriter&) = delete;
    ManifestWriter& operator=(const ManifestWriter&) = delete;

    /// Writes the manifest whole. Throws ProjectCoreError manifestTargetNotRegular or
    /// std::system_error; the former manifest stands then.
    void persist(ProjectManifest& manifest);
    /// Writes the manifest when only record `changed` (nothing: no record) differs from the last
    /// write. Throws as above.
    void persist(ProjectManifest& manifest, std::optional<std::size_t> changed);

    /// Begins the next writes ahead of time: those in which, one after the other, these records change.
    /// Older copies are brought up to date and flushed on another thread; nothing is published. When the
    /// writes come as foretold, persist() has nothing left to wait for; otherwise this was in vain. Does
    /// nothing where it would have to wait, and never fails.
    void prepare(const ProjectManifest& manifest, const std::vector<Change>& changes);

private:
    struct Prepared {
        Change change;
        std::int64_t revision;
        std::int64_t updatedAt;
        ManifestCopies::Copy copy;
    };

    bool prepareOne(const ProjectManifest& manifest, const Change& change);
    bool isForetold(const ProjectManifest& manifest, std::optional<std::size_t> changed) const;
    void publishPrepared(ProjectManifest& manifest);
    void dropPrepared(const ProjectManifest& manifest);
    void removePrepared();
    bool setRecord(std::size_t index, const ProjectFileRecord& record);
    ManifestCopies::Copy newCopy() const;
    ManifestCopies::Copy nextCopy(const ProjectManifest& manifest);
    bool wantsAnotherSpare(const ProjectManifest& manifest) const;
    void replace();

    ManifestCopies copies_;
    std::optional<ManifestText> text_;  ///< of the last write, or of the last prepared one
    std::size_t mostSpares_ = ManifestCopies::mostSpares;
    std::deque<Prepared> prepared_;  ///< in the order of their writes
    SideTask preparing_;
};

}  // namespace morvane
