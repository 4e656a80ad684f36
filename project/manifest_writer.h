// Writing the manifest at every state change without writing every record again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "project/project_json.h"
#include "project/side_task.h"
#include "support/unique_fd.h"

namespace morvane {

/// Writes the manifest of one project folder. At every moment a whole, valid manifest stands under its
/// name, and so it does after a power cut; each write adds 1 to `revision`.
///
/// Beside the manifest stand up to four complete older copies under temporary names. A change of one
/// record goes into the oldest of them: the places that changed since are overwritten, the file is
/// flushed, and the two names are exchanged in one step. A copy is only overwritten when no crash can
/// bring its name back (the folder was flushed since the exchange) and when nobody has it open any
/// more (a write lease is granted), so that a reader who opened the manifest earlier never sees a
/// mixture. One flush of the folder frees all copies for overwriting: it is needed once in as many
/// writes as there are copies, not more often. More than two are only made where the disk has room for
/// them beside all that the plan still has to copy. Where the file system knows no exchange or no
/// leases, a complete new file replaces the manifest instead. The copies are removed on destruction.
class ManifestWriter {
public:
    /// `root`: the project folder's descriptor; must outlive this object.
    explicit ManifestWriter(int root) : root_(root) {}
    ~ManifestWriter();
    ManifestWriter(const ManifestWriter&) = delete;
    ManifestWriter& operator=(const ManifestWriter&) = delete;

    /// Writes the manifest whole. Throws ProjectCoreError manifestTargetNotRegular or
    /// std::system_error; the former manifest stands then.
    void persist(ProjectManifest& manifest);
    /// Writes the manifest when only record `changed` (nothing: no record) differs from the last
    /// write. `beforePublishing` is called once, when the new text is flushed and before it takes the
    /// manifest's name: what the text says must be true by its end. Throws as above, and what
    /// `beforePublishing` throws; the former manifest stands then.
    void persist(ProjectManifest& manifest, std::optional<std::size_t> changed,
                 const std::function<void()>& beforePublishing = {});

private:
    struct Copy {
        std::string name;
        UniqueFd file;
        std::vector<ManifestText::Range> behind;  ///< what changed since this copy was the manifest
        /// The exchange that took the manifest's name from it; 0: it never had the name.
        std::uint64_t leftAt = 0;
    };

    void checkTarget() const;
    bool isStillCurrent() const;
    Copy makeCopy() const;
    bool wantsAnotherSpare(const ProjectManifest& manifest) const;
    Copy takeCopy(const ProjectManifest& manifest);
    void update(Copy& copy) const;
    bool isRetired(const Copy& copy) const { return copy.leftAt <= flushedUpTo_; }
    void beginRetiring();
    void endRetiring();
    void replace(const std::function<void()>& beforePublishing);
    void exchange(const ProjectManifest& manifest, const std::function<void()>& beforePublishing);
    void remove(const Copy& copy) const;
    void removeCopies();

    int root_;
    std::optional<ManifestText> text_;
    std::optional<Copy> current_;
    std::deque<Copy> spares_;  ///< oldest first
    std::size_t mostSpares_ = 4;
    bool canExchange_ = true;

    std::uint64_t exchanges_ = 0;
    std::uint64_t flushedUpTo_ = 0;            ///< no crash undoes the exchanges up to this one
    std::optional<std::uint64_t> flushingTo_;  ///< what the flush in progress will make durable
    SideTask folderFlush_;
};

}  // namespace morvane
