// SHA-256 of files, read through the safe open in blocks of at most 256 KiB.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "project/block_pipe.h"
#include "project/job_context.h"
#include "project/safe_open.h"
#include "support/file_url.h"
#include "support/sha256.h"

namespace morvane {

/// The bytes of a stream so far, told after every MiB and at the stream's end.
class ByteCount {
public:
    explicit ByteCount(const std::function<void(std::int64_t)>& tell) : tell_(tell) {}

    /// Adds what one read gave; 0 is the stream's end.
    void add(std::size_t count);
    std::int64_t total() const { return total_; }

private:
    const std::function<void(std::int64_t)>& tell_;
    std::int64_t total_ = 0;
    std::int64_t told_ = 0;
};

/// Keeps one digest, its buffers, its second thread and the way to the last file's folder between files. One
/// thread uses it at a time.
class FileHasher {
public:
    /// Bytes read so far, as ByteCount tells them; on the calling thread.
    using OnRead = std::function<void(std::int64_t)>;

    explicit FileHasher(JobContext& context) : context_(context) {}

    /// Lower-case hexadecimal SHA-256 of the whole file. The cancel flag is asked before every block.
    /// Throws what openRead throws, std::system_error, or the cancelled case.
    std::string hashFile(const FileUrl& url, const OnRead& onRead = {});
    /// The same for an open file, from its beginning on.
    std::string hashOpen(int file, const OnRead& onRead = {});
    /// SHA-256 of all that `fill` gives; hashed beside it on the second thread where `size`, the bytes
    /// expected, is worth it. Throws what `fill` throws.
    std::string hashStream(const BlockPipe::Fill& fill, std::int64_t size);
    /// SHA-256 over the decimal text of `size`, the first 65,536 bytes and, above that size, up to
    /// 65,536 bytes from offset max(size, 131,072) - 65,536. Throws as hashFile does.
    std::string fastFingerprint(const FileUrl& url, std::int64_t size);
    /// SHA-256 of the first 4,096 bytes: files that differ here differ in their fingerprint, too.
    std::string headFingerprint(const FileUrl& url);

private:
    void feed(int file, std::int64_t offset, std::size_t count);

    JobContext& context_;
    SafeOpener opener_;
    BlockPipe pipe_;
    Sha256 digest_;
};

/// Reads up to `room` bytes, again after an interruption; 0 at the end. Throws std::system_error.
std::size_t readSome(int file, char* bytes, std::size_t room);

}  // namespace morvane
