// Writing the manifest at every state change without writing every record again.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "project/project_json.h"
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
    /// write. Throws as above.
    void persist(ProjectManifest& manifest, std::optional<std::size_t> changed);

private:
    struct Copy {
        std::string name;
        UniqueFd file;
        std::vector<ManifestText::Range> behind;  ///< what changed since this copy was the manifest
        bool isRetired = false;                   ///< no crash can bring the manifest's name back to it
    };

    void checkTarget() const;
    bool isStillCurrent() const;
    Copy makeCopy() const;
    bool wantsAnotherSpare(const ProjectManifest& manifest) const;
    Copy takeCopy(const ProjectManifest& manifest);
    void replace();
    void exchange(const ProjectManifest& manifest);
    void remove(const Copy& copy) const;
    void removeCopies();

    int root_;
    std::optional<ManifestText> text_;
    std::optional<Copy> current_;
    std::deque<Copy> spares_;  ///< oldest first
    std::size_t mostSpares_ = 4;
    bool canExchange_ = true;
};

}  // namespace morvane
