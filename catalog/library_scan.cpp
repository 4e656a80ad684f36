#include "catalog/library_scan.h"

#include <sys/stat.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>

#include "catalog/folder_walk.h"
#include "support/format_text.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

constexpr std::size_t progressStep = 2000;

bool existsAt(const std::string& path) {
    struct stat attributes {};
    return path.starts_with('/') && path.find('\0') == std::string::npos &&
           ::stat(path.c_str(), &attributes) == 0;
}

// Adds the rows that `list` holds of `root`; how many were new.
std::size_t addRowsOf(const std::string& root, const AssetList& list, AssetList::Builder& builder) {
    const auto found = std::find(list.roots().begin(), list.roots().end(), root);
    if (found == list.roots().end())
        return 0;
    const std::size_t before = builder.size();
    const auto wanted = static_cast<std::uint32_t>(found - list.roots().begin());
    for (std::size_t row = 0; row < list.size(); ++row)
        if (list.rootOf(row) == wanted)
            builder.add(list.at(row));
    return builder.size() - before;
}

// Counts the files of every thread, and kept ones, and tells each full step once, in rising order.
class Progress {
public:
    explicit Progress(const std::function<void(std::size_t)>& tell) : tell_(tell) {}

    void add(std::size_t files) {
        const std::lock_guard lock(mutex_);
        const std::size_t before = found_;
        found_ += files;
        if (!tell_)
            return;
        for (std::size_t step = before / progressStep + 1; step <= found_ / progressStep; ++step)
            tell_(step * progressStep);
    }

private:
    const std::function<void(std::size_t)>& tell_;
    std::mutex mutex_;
    std::size_t found_ = 0;  // guarded by `mutex_`
};

class LibraryScan {
public:
    explicit LibraryScan(const ScanRequest& request) : request_(request), progress_(request.progress) {}

    ScanResult run() {
        for (std::size_t index = 0; index < request_.roots.size(); ++index)
            takeRoot(index);
        result_.assets = builder_.finishSorted();
        return std::move(result_);
    }

private:
    void takeRoot(std::size_t index) {
        const std::string& root = request_.roots[index];
        if (!existsAt(root)) {
            result_.offline.emplace_back(lastPathComponent(root));
            result_.offlineRoots.push_back(root);
            if (request_.previous)
                progress_.add(addRowsOf(root, *request_.previous, builder_));
        } else if (!isValidUtf8(root)) {
            ++result_.unreadable;
        } else {
            walk(index);
        }
        if (request_.stop.stop_requested())
            throw ScanStopped();
    }

    // Two library folders can show the same file only when one lies in the other.
    bool meetsEarlierRoot(std::size_t index) const {
        const std::string folder = standardizedPath(request_.roots[index]);
        return std::any_of(request_.roots.begin(),
                           request_.roots.begin() + static_cast<std::ptrdiff_t>(index),
                           [&folder](const std::string& root) {
                               const std::string earlier = standardizedPath(root);
                               return isAtOrBelow(folder, earlier) || isAtOrBelow(earlier, folder);
                           });
    }

    void walk(std::size_t index) {
        const std::string& root = request_.roots[index];
        WalkRequest request;
        request.folder = standardizedPath(root);
        request.found = [this](std::size_t files) { progress_.add(files); };
        request.stop = request_.stop;
        if (meetsEarlierRoot(index))
            request.isKnown = [this](const std::string& path) { return builder_.contains(path); };
        const FolderWalk found(request);
        result_.unreadable += found.unreadable();
        found.forEachFolder([&](const std::string& folder, const std::vector<WalkedFile>& files) {
            takeFolder(root, folder, files);
        });
    }

    void takeFolder(const std::string& root, const std::string& folder,
                    const std::vector<WalkedFile>& files) {
        const std::size_t dropped = characterCount(root) + 1;
        // Where the drop ends inside the folder's own path it is the same for all its files.
        const std::size_t shared = characterOffset(folder, dropped);
        std::string path = folder == "/" ? folder : folder + "/";
        const std::size_t prefix = path.size();
        for (const WalkedFile& file : files) {
            path.resize(prefix);
            path += file.name;
            const std::size_t offset = shared < folder.size() ? shared : characterOffset(path, dropped);
            builder_.add(path, root, std::string_view(path).substr(offset), file.size, file.modified);
        }
    }

    const ScanRequest& request_;
    Progress progress_;
    AssetList::Builder builder_;
    ScanResult result_;
};

std::string countsText(std::size_t rootCount, std::size_t assetCount) {
    return std::to_string(rootCount) + " 个素材文件夹 · " +
           formatCount(static_cast<std::int64_t>(assetCount)) + " 个素材";
}

}  // namespace

ScanResult scanLibrary(const ScanRequest& request) {
    return LibraryScan(request).run();
}

SharedAssets withKeptRows(const ScanResult& result, const std::vector<std::string>& roots,
                          const AssetList& previous) {
    const auto& offline = result.offlineRoots;
    AssetList::Builder builder;
    for (const std::string& root : roots) {
        const bool isOffline = std::find(offline.begin(), offline.end(), root) != offline.end();
        addRowsOf(root, isOffline ? previous : *result.assets, builder);
    }
    return builder.finishSorted();
}

std::string_view relativePath(std::string_view path, std::string_view root) {
    return path.substr(characterOffset(path, characterCount(root) + 1));
}

std::string scanProgressText(std::size_t found) {
    return "正在建立索引…已找到 " + formatCount(static_cast<std::int64_t>(found)) + " 个素材";
}

std::string scanSummaryText(std::size_t rootCount, const ScanResult& result, const std::string& notice) {
    std::string text;
    if (result.offline.empty()) {
        text = countsText(rootCount, result.assets->size());
    } else {
        text = "离线：";
        for (std::size_t index = 0; index < result.offline.size(); ++index)
            text += (index == 0 ? "" : "、") + result.offline[index];
        text += " · 已保留索引，连接硬盘后刷新";
    }
    if (result.unreadable > 0)
        text += " · " + std::to_string(result.unreadable) + " 个目录无法读取";
    return text + notice;
}

std::string loadSummaryText(std::size_t rootCount, std::size_t assetCount, CatalogState state) {
    const std::string text = countsText(rootCount, assetCount);
    return state == CatalogState::Recovery ? text + " · 索引恢复模式，旧副本已保留" : text;
}

}  // namespace morvane
