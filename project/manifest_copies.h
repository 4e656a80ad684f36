// The file under the manifest's name and its complete older copies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "project/project_json.h"
#include "project/side_task.h"
#include "support/unique_fd.h"

namespace morvane {

/// Puts new texts under the manifest's name in one step each, without writing all of it again.
///
/// Beside the manifest stand complete older copies under temporary names. A new text goes into the
/// oldest of them: the places that changed since are overwritten, the file is flushed, and the two
/// names are exchanged. A copy is only overwritten when no crash can bring the manifest's name back to
/// it (the folder was flushed since the exchange) and when nobody has it open any more (a write lease is
/// granted), so that a reader who opened the manifest earlier never sees a mixture. One flush of the
/// folder frees all copies that left the name before it began; it runs on another thread while the
/// caller goes on, begun early enough that hardly a write waits for it. One thread uses this at a time.
class ManifestCopies {
public:
    /// A complete file with some manifest text.
    struct Copy {
        std::string name;
        UniqueFd file;
        std::vector<ManifestText::Range> behind;  ///< where it differs from the present text
        std::uint64_t leftAt = 0;  ///< the exchange that took the manifest's name from it; 0: it never had it
    };
    static constexpr std::size_t mostSpares = 4;

    /// `root`: the project folder's descriptor; must outlive this object.
    explicit ManifestCopies(int root) : root_(root) {}
    /// Removes the copies; the manifest stays.
    ~ManifestCopies();
    ManifestCopies(const ManifestCopies&) = delete;
    ManifestCopies& operator=(const ManifestCopies&) = delete;

    /// All files, the manifest's too, differ from the present text in this place from now on.
    void noteChange(ManifestText::Range range);
    /// Throws ProjectCoreError manifestTargetNotRegular where something else has the manifest's name.
    void checkTarget() const;
    /// Whether the next text can be published by exchange().
    bool canExchange() const;
    std::size_t spares() const { return spares_.size(); }
    /// Bytes free on the project's file system; nothing where it does not say.
    std::optional<double> availableBytes() const;

    /// The oldest spare, when it can be overwritten without waiting for anything.
    std::optional<Copy> takeFree();
    /// A copy to overwrite: the oldest spare, as soon as it can be, or a new file, not yet flushed.
    /// `text` is what a new file is filled with. Throws std::system_error.
    Copy take(const ManifestText& text);
    /// A new file with the present text, not yet flushed. Throws std::system_error.
    Copy make(const ManifestText& text) const;
    /// Writes into `copy` what it is behind, and the head. Throws std::system_error.
    static void bringUpToDate(Copy& copy, const ManifestText& text);
    /// Puts a copy that was taken back among the spares, as their oldest.
    void giveBack(Copy copy);
    void remove(const Copy& copy) const;

    /// Gives the manifest's name to `next`, which must be flushed; the file that had it becomes the
    /// newest spare. False (and `next` is removed) where the file system knows no exchange.
    bool exchange(Copy next);
    /// Removes the spares, and takes the file under the manifest's name for a foreign one.
    void forget();
    /// Gives the manifest's name to `next` over whatever file has it, and flushes the folder. Throws
    /// std::system_error (and `next` is removed).
    void replace(Copy next);

private:
    bool isFree(const Copy& copy) const { return copy.leftAt <= flushedUpTo_; }
    void beginFlush();
    void endFlush();

    int root_;
    std::optional<Copy> current_;
    std::deque<Copy> spares_;  ///< oldest first
    bool knowsExchange_ = true;

    std::uint64_t exchanges_ = 0;
    std::uint64_t flushedUpTo_ = 0;            ///< no crash undoes the exchanges up to this one
    std::optional<std::uint64_t> flushingTo_;  ///< what the flush in progress will make durable
    SideTask folderFlush_;
};

}  // namespace morvane
