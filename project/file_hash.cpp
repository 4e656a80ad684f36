#include "project/file_hash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "support/system_error.h"

namespace morvane {

namespace {

constexpr std::size_t fingerprintPiece = 65'536;
constexpr std::size_t headPiece = 4'096;

}  // namespace

std::size_t readSome(int file, char* bytes, std::size_t room) {
    while (true) {
        const ssize_t count = ::read(file, bytes, room);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno != EINTR)
            throwErrno();
    }
}

void ByteCount::add(std::size_t count) {
    constexpr std::int64_t step = 1'048'576;
    total_ += static_cast<std::int64_t>(count);
    if (total_ - told_ < (count > 0 ? step : 1))
        return;
    told_ = total_;
    if (tell_)
        tell_(total_);
}

std::string FileHasher::hashFile(const FileUrl& url, const OnRead& onRead) {
    const UniqueFd file = opener_.openRead(url);
    return hashOpen(file.get(), onRead);
}

std::string FileHasher::hashOpen(int file, const OnRead& onRead) {
    if (::lseek(file, 0, SEEK_SET) != 0)
        throwErrno();
    ::posix_fadvise(file, 0, 0, POSIX_FADV_SEQUENTIAL);
    struct stat status {};
    if (::fstat(file, &status) != 0)
        throwErrno();
    ByteCount total(onRead);
    context_.throwIfCancelled();
    return hashStream(
        [&](char* block, std::size_t room) {
            const std::size_t count = readSome(file, block, room);
            total.add(count);
            context_.throwIfCancelled();
            return count;
        },
        status.st_size);
}

std::string FileHasher::hashStream(const BlockPipe::Fill& fill, std::int64_t size) {
    digest_.reset();
    pipe_.transfer(
        fill, [this](const char* block, std::size_t count) { digest_.update(block, count); },
        size >= static_cast<std::int64_t>(BlockPipe::overlapFrom));
    return digest_.finish();
}

void FileHasher::feed(int file, std::int64_t offset, std::size_t count) {
    std::array<char, fingerprintPiece> bytes;
    for (std::size_t done = 0; done < count;) {
        const ssize_t got = ::pread(file, bytes.data(), std::min(bytes.size(), count - done),
                                    offset + static_cast<std::int64_t>(done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throwErrno();
        if (got == 0)
            return;
        digest_.update(bytes.data(), static_cast<std::size_t>(got));
        done += static_cast<std::size_t>(got);
    }
}

std::string FileHasher::fastFingerprint(const FileUrl& url, std::int64_t size) {
    context_.throwIfCancelled();
    const UniqueFd file = opener_.openRead(url);
    constexpr auto piece = static_cast<std::int64_t>(fingerprintPiece);
    digest_.reset();
    digest_.update(std::to_string(size));
    feed(file.get(), 0, fingerprintPiece);
    // A file of up to two pieces gets its second read from where the first ended, without overlap.
    if (size > piece)
        feed(file.get(), std::max(size, 2 * piece) - piece, fingerprintPiece);
    return digest_.finish();
}

std::string FileHasher::headFingerprint(const FileUrl& url) {
    context_.throwIfCancelled();
    const UniqueFd file = opener_.openRead(url);
    // Only this piece is wanted: no reading ahead.
    ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_RANDOM);
    digest_.reset();
    feed(file.get(), 0, headPiece);
    return digest_.finish();
}

}  // namespace morvane
