// What the tests of every room share: temporary folders, trees as literals, waiting for conditions.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace morvane::test {

/// A new empty folder below the system's folder for temporary files; removed with its content.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "morvane-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), pattern);
        path_ = std::filesystem::canonical(pattern).string();
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Absolute, without links, without a trailing "/".
    const std::string& path() const { return path_; }
    /// The folder's path, "/" and `relative`.
    std::string operator/(const std::string& relative) const { return path_ + "/" + relative; }

private:
    std::string path_;
};

/// Writes a whole file, making the folders above it. Throws on failure.
inline void writeFile(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

/// The whole content of a file. Throws when it cannot be read.
inline std::string readAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct TreeEntry {
    std::string path;   ///< below the root; a final "/" makes an empty folder
    std::string bytes;  ///< content of the file
};

/// Makes files and folders: makeTree(root, {{"a/b.mov", "bytes"}, {"empty/", ""}}).
inline void makeTree(const std::string& root, const std::vector<TreeEntry>& entries) {
    std::filesystem::create_directories(root);
    for (const TreeEntry& entry : entries) {
        if (entry.path.ends_with('/'))
            std::filesystem::create_directories(root + "/" + entry.path);
        else
            writeFile(root + "/" + entry.path, entry.bytes);
    }
}

/// Everything below `root`, as sorted paths relative to it; folders end in "/". Links are listed,
/// not followed.
inline std::vector<std::string> listTree(const std::string& root) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const bool isFolder = entry.is_directory() && !entry.is_symlink();
        paths.push_back(entry.path().string().substr(root.size() + 1) + (isFolder ? "/" : ""));
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

/// Sets the modification time of a file or folder (seconds since 1970 UTC, fractions allowed).
inline void setModified(const std::string& path, double seconds) {
    const auto whole = static_cast<time_t>(std::floor(seconds));
    const auto nanoseconds = static_cast<long>(std::llround((seconds - static_cast<double>(whole)) * 1e9));
    const timespec times[2] = {{0, UTIME_OMIT}, {whole, nanoseconds}};
    if (::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
        throw std::system_error(errno, std::generic_category(), path);
}

/// Runs the event loop until `condition` holds; false when it does not within the deadline.
/// The condition is looked at after every batch of events, and at least every 5 ms.
inline bool waitUntil(const std::function<bool()>& condition, double deadlineSeconds = 20) {
    const QDeadlineTimer deadline(static_cast<qint64>(deadlineSeconds * 1000));
    QTimer tick;  // wakes the loop for conditions that no event announces
    tick.start(std::chrono::milliseconds(5));
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

}  // namespace morvane::test
