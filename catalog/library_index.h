// The library's list and how it comes about: load at launch, refresh, rename.
#pragma once

#include <cstddef>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include <QObject>

#include "catalog/asset_list.h"
#include "catalog/catalog_repository.h"
#include "catalog/library_scan.h"
#include "catalog/rename_asset.h"
#include "catalog/search_keys.h"
#include "catalog/settings.h"
#include "support/serial_queue.h"

namespace morvane {

inline constexpr const char* recoveryStatusText = "索引暂时无法保存，已保留旧副本。可继续浏览，稍后重试。";
inline constexpr const char* addFolderStatusText = "添加素材文件夹开始管理，或切换到整理素材新建拍摄项目。";
inline constexpr const char* renameNotSavedText = "文件已改名，但索引保存失败，请刷新重试。";

enum class AfterLoad { Refresh, AskForFolder, Nothing };
/// What follows the load: a refresh that is due, the request to add a folder, or nothing.
AfterLoad decideAfterLoad(const Settings& settings, std::size_t assetCount);

/// A refresh, synchronously: walk, keys, save. Throws ScanStopped. The window runs its two halves on two
/// queues; the command line calls this. Stopped while it saves, it leaves the catalog as it was.
/// `request.previous` is what the catalog holds: rows of offline folders that are missing there are lost.
struct RefreshedLibrary {
    ScanResult scan;
    SharedKeys keys;
    std::string notice;  ///< empty when saved
};
RefreshedLibrary refreshLibrary(CatalogRepository& catalog, const ScanRequest& request);

/// How a refresh ended.
struct RefreshReport {
    bool saved = false;     ///< the catalog holds the new list
    bool followUp = false;  ///< asked for again, or the folders changed meanwhile: refresh once more
    std::vector<std::string> offline;
    std::size_t unreadable = 0;
};

/// How a rename went, before its list is saved.
struct RenameReport {
    std::string oldPath;
    Asset asset;        ///< the renamed asset; the unchanged one after a failure
    std::string error;  ///< empty on success; else the sentence to show
};

/// Owns the list. Main thread only; walks and catalog work run on queues of their own and arrive as whole
/// values. Ends a walk in progress when destroyed.
///
/// A load that failed leaves a list without what the catalog holds of offline folders. A refresh that meets
/// such a folder then reads the catalog again before it writes it, and writes nothing while that fails. A
/// rename before the next refresh is not written.
class LibraryIndex : public QObject {
    Q_OBJECT
public:
    /// `settings` is read (roots) on the main thread whenever needed and must outlive this object. `store` is
    /// the store folder.
    LibraryIndex(const Settings& settings, std::string store, QObject* parent = nullptr);
    ~LibraryIndex() override;

    CatalogRepository& catalog() { return catalog_; }
    const SharedAssets& assets() const { return assets_; }
    const SharedKeys& keys() const { return keys_; }
    bool scanning() const { return scanning_; }
    bool renaming() const { return renaming_; }
    bool pendingScan() const { return pendingScan_; }
    const std::string& scanSummary() const { return scanSummary_; }
    bool catalogRecovery() const { return catalogRecovery_; }
    const SerialQueue& catalogQueue() const { return catalogQueue_; }

    /// Reads the catalog; loaded() follows.
    void load();
    /// Starts a refresh of settings.roots and emits refreshStarted(), or, while one runs, marks one more as
    /// wanted. Asked for during the load or a rename, it starts right after. The caller has set
    /// settings.pendingRefresh and saved before.
    void refresh();
    /// Whether rename() would begin: not while the load, a refresh or another rename runs.
    bool canRename() const { return !loading_ && !scanning_ && !renaming_; }
    /// Renames the file of `asset` and lets the list follow; renamed() follows. False, doing nothing, unless
    /// canRename(). A refresh asked for meanwhile starts afterwards.
    bool rename(const Asset& asset, const std::string& baseName);

Q_SIGNALS:
    /// assets(), keys(), catalogRecovery() and scanSummary() are those of the catalog.
    void loaded();
    void refreshStarted();
    /// `text` for the status line, every 2000 files, always before refreshFinished().
    void progress(const std::string& text);
    /// assets(), keys(), catalogRecovery() and scanSummary() are those of the refresh; scanning() is false.
    /// When `report.followUp` is set the receiver calls its scan once more, last.
    void refreshFinished(const morvane::RefreshReport& report);
    /// On success assets() and keys() hold the renamed asset already; saving goes on.
    void renamed(const morvane::RenameReport& report);
    /// The list after a rename was written, or not.
    void renameSaved(bool saved);

private:
    void finishLoad(const LoadedLibrary& library);
    void saveRefresh(const std::vector<std::string>& roots, const RefreshedLibrary& library);
    void finishRefresh(const std::vector<std::string>& roots, const RefreshedLibrary& library);
    void finishRename(const RenameReport& report, const RenamedLibrary& library);
    void saveRename();

    const Settings& settings_;
    CatalogRepository catalog_;
    SharedAssets assets_;
    SharedKeys keys_;
    bool scanning_ = false;
    bool pendingScan_ = false;
    bool loading_ = false;
    bool renaming_ = false;
    std::string scanSummary_;
    bool catalogRecovery_ = false;
    bool catalogUnread_ = false;  // assets_ may lack what the catalog holds of offline folders
    std::stop_source stop_;
    SerialQueue catalogQueue_;
    SerialQueue scanQueue_;
};

}  // namespace morvane
