#include "organizer_ui/folder_listing.h"

#include <dirent.h>
#include <sys/stat.h>

#include <QFile>
#include <QStandardPaths>
#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>

#include "support/natural_order.h"
#include "support/path_text.h"
#include "support/system_error.h"

namespace morvane {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

std::vector<FolderEntry> readEntries(DIR* directory, const std::atomic<bool>& cancelled) {
    std::vector<FolderEntry> entries;
    // The stream is this function's own, so readdir has no one to race with.
    while (const dirent* found =
               cancelled ? nullptr : ::readdir(directory)) {  // NOLINT(concurrency-mt-unsafe)
        if (found->d_name[0] == '.')
            continue;
        struct stat status {};
        if (::fstatat(::dirfd(directory), found->d_name, &status, 0) != 0)
            continue;
        const bool isFolder = S_ISDIR(status.st_mode);
        if (!isFolder && !S_ISREG(status.st_mode))
            continue;
        entries.push_back({found->d_name, isFolder, isFolder ? 0 : status.st_size, status.st_mtim.tv_sec});
    }
    return entries;
}

std::vector<FolderEntry> inBrowserOrder(std::vector<FolderEntry> entries) {
    std::vector<std::string_view> names;
    names.reserve(entries.size());
    for (const FolderEntry& entry : entries)
        names.push_back(entry.name);
    std::vector<FolderEntry> sorted;
    sorted.reserve(entries.size());
    for (const std::uint32_t i : naturalOrder(names))
        sorted.push_back(entries[i]);
    std::stable_partition(sorted.begin(), sorted.end(),
                          [](const FolderEntry& entry) { return entry.isFolder; });
    return sorted;
}

/// Resolves the octal escapes ("\040") of a mount table's field.
std::string unescaped(std::string_view field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                      (field[i + 3] - '0'));
            i += 3;
        } else {
            text += field[i];
        }
    }
    return text;
}

/// The fifth field of a line of the mount table; empty for a shorter line.
std::string_view mountPoint(std::string_view line) {
    for (int field = 0; field < 4; ++field) {
        const std::size_t space = line.find(' ');
        if (space == std::string_view::npos)
            return {};
        line.remove_prefix(space + 1);
    }
    return line.substr(0, line.find(' '));
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

FolderListing listFolder(const std::string& path, const std::atomic<bool>& cancelled) {
    FolderListing listing;
    listing.path = standardizedPath(path);
    struct stat status {};
    if (::stat(listing.path.c_str(), &status) != 0) {
        listing.error = "找不到此位置：" + listing.path;
        return listing;
    }
    if (!S_ISDIR(status.st_mode)) {
        listing.select = lastPathComponent(listing.path);
        listing.path = parentPath(listing.path);
    }
    const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir(listing.path.c_str()));
    if (!directory) {
        listing.error = "无法读取此文件夹：" + systemErrorText(errno);
        return listing;
    }
    listing.entries = inBrowserOrder(readEntries(directory.get(), cancelled));
    return listing;
}

std::string makeFolder(const std::string& folder, const std::string& name) {
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
        return "文件夹名称无效。";
    if (::mkdir(joinPath(folder, name).c_str(), 0777) == 0)
        return {};
    return errno == EEXIST ? "已存在同名项目。" : "无法新建文件夹：" + systemErrorText(errno);
}

std::vector<Place> knownPlaces() {
    constexpr std::array<std::pair<QStandardPaths::StandardLocation, const char*>, 6> folders = {
        {{QStandardPaths::HomeLocation, "个人文件夹"},
         {QStandardPaths::DesktopLocation, "桌面"},
         {QStandardPaths::DocumentsLocation, "文稿"},
         {QStandardPaths::DownloadLocation, "下载"},
         {QStandardPaths::MoviesLocation, "视频"},
         {QStandardPaths::MusicLocation, "音乐"}}};
    std::vector<Place> places;
    for (const auto& [location, title] : folders) {
        const std::string path = QFile::encodeName(QStandardPaths::writableLocation(location)).toStdString();
        const bool known = std::any_of(places.begin(), places.end(),
                                       [&path](const Place& place) { return place.path == path; });
        if (!known && isFolder(path))
            places.push_back({title, path, "folder"});
    }
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    if (table.open(QIODevice::ReadOnly))
        for (Place& drive : mountedDrives(table.readAll().toStdString()))
            places.push_back(std::move(drive));
    places.push_back({"文件系统", "/", "externaldrive"});
    return places;
}

std::vector<Place> mountedDrives(const std::string& mountInfo) {
    std::vector<Place> drives;
    std::size_t start = 0;
    while (start < mountInfo.size()) {
        const std::size_t end = std::min(mountInfo.find('\n', start), mountInfo.size());
        const std::string_view line(mountInfo.data() + start, end - start);
        start = end + 1;
        const std::string path = unescaped(mountPoint(line));
        for (const char* parent : {"/media", "/run/media", "/mnt"})
            if (isAtOrBelow(path, parent) && path != "/media" && path != "/run/media")
                drives.push_back({std::string(lastPathComponent(path)), path, "externaldrive"});
    }
    return drives;
}

}  // namespace morvane
