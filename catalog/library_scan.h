// The walk of the library folders, and the texts that tell of it.
//
// Only names and attributes are read. Hidden entries, packages and symbolic links are passed over. Folders
// are read by two threads; the result does not depend on who was faster: within a library folder the walk
// order is the byte order of the folders' paths and of the names inside each.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/asset_list.h"

namespace morvane {

/// Thrown by scanLibrary when its stop token was used.
class ScanStopped : public std::runtime_error {
public:
    ScanStopped() : std::runtime_error("scan stopped") {}
};

struct ScanRequest {
    std::vector<std::string> roots;  ///< library folders, in order
    SharedAssets previous;           ///< the list so far: what an offline folder keeps; may be null
    /// Told each multiple of 2000 files found, those that offline folders keep included, in rising order,
    /// from the calling and the walking threads, one call at a time; must not throw or block.
    std::function<void(std::size_t found)> progress;
    std::stop_token stop;
};

struct ScanResult {
    SharedAssets assets;                    ///< sorted by file name as a file browser sorts
    std::vector<std::string> offline;       ///< last components of folders that do not exist, in folder order
    std::vector<std::string> offlineRoots;  ///< the same folders as they stand in the request
    std::size_t unreadable = 0;             ///< folders that could not be read, and names that are no UTF-8
};

/// Walks, synchronously. Throws ScanStopped, nothing else but lack of memory. Any thread.
ScanResult scanLibrary(const ScanRequest& request);

/// The list `result` would have if its walk of `roots` had begun with `previous`: offline folders keep what
/// `previous` holds of them, and nothing else.
SharedAssets withKeptRows(const ScanResult& result, const std::vector<std::string>& roots,
                          const AssetList& previous);

/// `path` without its first N+1 characters, N being the number of user-perceived characters of `root` as
/// stored. A plain drop: a root stored with a trailing "/" costs a character. Points into `path`.
std::string_view relativePath(std::string_view path, std::string_view root);

/// "正在建立索引…素材文件保持原位置。"
inline constexpr const char* scanStartedText = "正在建立索引…素材文件保持原位置。";
/// "正在建立索引…已找到 2,000 个素材"
std::string scanProgressText(std::size_t found);
/// Summary after a refresh; `notice` (possibly empty) comes last.
std::string scanSummaryText(std::size_t rootCount, const ScanResult& result, const std::string& notice);
/// Summary after a load.
enum class CatalogState { Normal, Recovery };
std::string loadSummaryText(std::size_t rootCount, std::size_t assetCount, CatalogState state);

}  // namespace morvane
