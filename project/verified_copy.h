// The verified copy of one file, and the folders it needs inside the project.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "project/job_context.h"
#include "project/project_records.h"
#include "support/unique_fd.h"

namespace morvane {

/// Makes sure that every folder from `root` down to `directory` is a real folder, creating the
/// missing ones (mode 0755), and returns `directory` opened; everything done relative to that
/// descriptor stays inside the project whatever happens to the names meanwhile. No symbolic link is
/// followed from "/" on. Throws ProjectCoreError (outsideProject, projectChanged, subfolderNotReal,
/// cannotMakeFolderPrefix + system text).
UniqueFd ensureDirectory(const FileUrl& directory, const FileUrl& root);

/// Gives a published copy its source's date (seconds since 1970) and mode 0644. What fails is passed
/// over: the copy stands.
void setCopyAttributes(int file, double modified);

/// Copies files, in two halves where wanted, so that one file can be flushed and verified while the next
/// one is read and written. Keeps its buffers, digests and second threads between files. One
/// thread may begin copies while another one finishes them.
class VerifiedCopier {
public:
    /// Bytes of this file copied so far (cumulative), as ByteCount tells them; on the calling thread.
    using ByteProgress = std::function<void(std::int64_t)>;

    /// A copy that is written, but not verified. Its temporary file goes with it.
    class Begun;

    /// The mode of a copy until it has its final name.
    static constexpr mode_t unpublishedMode = 0600;

    explicit VerifiedCopier(JobContext& context);
    ~VerifiedCopier();

    /// Copies `item` below `root` and returns the copy's SHA-256 (lower-case hexadecimal). Afterwards
    /// either the whole verified file stands under its planned name (date of the source, mode 0644) and
    /// survives a power cut, its name included, or this throws and nothing new stands there (the verified
    /// file does where only the last flush fails). The temporary file is gone in each case.
    ///
    /// Steps: safe destination; real folders; free name; source opened without following links and
    /// equal to the plan (size; date within 0.001 s); temporary file in the destination's folder;
    /// streamed read, write and hash in blocks of 256 KiB (here begin() ends); flush; source unchanged
    /// (exact); hash as planned; the file read back and compared; exclusive rename; date and mode; flush
    /// of the folder.
    ///
    /// The file is read back after its cached pages were dropped, so that the bytes come from the
    /// medium. What that promises: the system was asked after a completed flush, and ext4, xfs, btrfs
    /// and the kernel's exFAT then read from the device. What it cannot: a device may answer from a
    /// cache of its own, a network or FUSE file system from its server's or driver's, and tmpfs has no
    /// medium at all.
    ///
    /// Throws ProjectCoreError (messages in described order, or its cancelled case) or
    /// std::system_error for failed reads, writes, flushes and closes.
    std::string copy(const ProjectPlanItem& item, const FileUrl& root, const ByteProgress& byteProgress);

    /// The first half; `item` must outlive what is returned. Throws as copy() does.
    std::shared_ptr<Begun> begin(const ProjectPlanItem& item, const FileUrl& root,
                                 const ByteProgress& byteProgress);
    /// The same before the file's turn, and flushed already: nothing where its folder does not stand yet,
    /// and none is made.
    std::shared_ptr<Begun> beginAhead(const ProjectPlanItem& item, const FileUrl& root,
                                      const ByteProgress& byteProgress);
    /// Whether beginning again would find what begin() found: the same folder, a free name, the same
    /// unchanged source. To be asked when it is the turn of what was begun ahead.
    static bool stillHolds(const Begun& begun, const FileUrl& root);
    /// SHA-256 of what was read.
    static const std::string& digest(const Begun& begun);
    /// The second half. Throws as copy() does.
    std::string finish(std::shared_ptr<Begun> begun);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace morvane
