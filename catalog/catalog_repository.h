// The single owner of the catalog database.
#pragma once

#include <atomic>
#include <memory>
#include <stop_token>
#include <string>

#include "catalog/asset_list.h"
#include "catalog/catalog_store.h"
#include "catalog/search_keys.h"

namespace morvane {

inline constexpr const char* catalogFilename = "catalog.sqlite";
inline constexpr const char* legacyIndexFilename = "index.json";
/// The notice after a list that is not in the catalog.
inline constexpr const char* notSavedNotice = " · 索引保存失败，本次使用内存结果，请刷新重试";

/// A list with its keys, and what went wrong on the way to or from the catalog (empty: nothing).
struct LoadedLibrary {
    SharedAssets assets;
    SharedKeys keys;
    std::string notice;
};

/// Everything but isSynchronized() belongs to the catalog queue.
class CatalogRepository {
public:
    /// `directory` is the store folder; nothing is opened yet.
    explicit CatalogRepository(std::string directory);

    const std::string& directory() const { return directory_; }
    /// The open store; nullptr until it was opened once.
    CatalogStore* database() const { return database_.get(); }
    /// True when the last load or save through this repository completed. Any thread.
    bool isSynchronized() const { return isSynchronized_; }
    /// The open store, opened now when need be. A failed opening is thrown and tried again next time.
    CatalogStore& connection();

    /// Every asset in position order with its key. When the catalog cannot be read: the assets of the older
    /// index (or none), and a notice. Never throws.
    LoadedLibrary load();
    /// Writes `list`; the notice to append to the summary, empty on success. Never throws. When `stop` is
    /// used on the way the catalog keeps its old content.
    std::string save(const AssetList& list, const SearchKeys& keys, const std::stop_token& stop = {});
    /// The catalog's answer; a failure is thrown and leaves the repository out of step.
    SharedAssets query(const CatalogQuery& query);

private:
    const std::string directory_;
    std::unique_ptr<CatalogStore> database_;
    std::atomic<bool> isSynchronized_ = false;
};

}  // namespace morvane
