#include "catalog/library_index.h"

#include <exception>
#include <utility>

#include <QPointer>

#include "support/deliver.h"
#include "support/main_post.h"

namespace morvane {

namespace {

RefreshedLibrary walked(const ScanRequest& request) {
    RefreshedLibrary library;
    library.scan = scanLibrary(request);
    library.keys = std::make_shared<const SearchKeys>(*library.scan.assets);
    return library;
}

// Gives the offline folders of a walk what the catalog holds of them. While it cannot be read a save would
// drop those rows for good: the refresh then ends as one that could not be saved.
void takeKeptRows(CatalogRepository& catalog, const std::vector<std::string>& roots,
                  RefreshedLibrary& library) {
    if (library.scan.offlineRoots.empty())
        return;
    const LoadedLibrary known = catalog.load();
    if (!known.notice.empty()) {
        library.notice = notSavedNotice;
        return;
    }
    library.scan.assets = withKeptRows(library.scan, roots, *known.assets);
    library.keys = std::make_shared<const SearchKeys>(*library.scan.assets);
}

}  // namespace

AfterLoad decideAfterLoad(const Settings& settings, std::size_t assetCount) {
    if (settings.pendingRefresh.value_or(false))
        return AfterLoad::Refresh;
    if (settings.roots.empty())
        return AfterLoad::AskForFolder;
    return assetCount == 0 ? AfterLoad::Refresh : AfterLoad::Nothing;
}

RefreshedLibrary refreshLibrary(CatalogRepository& catalog, const ScanRequest& request) {
    RefreshedLibrary library = walked(request);
    library.notice = catalog.save(*library.scan.assets, *library.keys, request.stop);
    if (!library.notice.empty() && request.stop.stop_requested())
        throw ScanStopped();
    return library;
}

LibraryIndex::LibraryIndex(const Settings& settings, std::string store, QObject* parent)
    : QObject(parent),
      settings_(settings),
      catalog_(std::move(store)),
      assets_(std::make_shared<const AssetList>()),
      keys_(std::make_shared<const SearchKeys>(*assets_)),
      catalogQueue_("com.morvane.library.catalog"),
      scanQueue_("com.morvane.library.scan", SerialQueue::Priority::Utility) {}

LibraryIndex::~LibraryIndex() {
    stop_.request_stop();
}

void LibraryIndex::load() {
    loading_ = true;
    runAndDeliver(
        catalogQueue_, this, [catalog = &catalog_] { return catalog->load(); },
        [](LibraryIndex& index, Outcome<LoadedLibrary>& outcome) { index.finishLoad(outcome.get()); });
}

void LibraryIndex::finishLoad(const LoadedLibrary& library) {
    loading_ = false;
    assets_ = library.assets;
    keys_ = library.keys;
    catalogRecovery_ = !library.notice.empty();
    catalogUnread_ = catalogRecovery_;
    scanSummary_ = loadSummaryText(settings_.roots.size(), assets_->size(),
                                   catalogRecovery_ ? CatalogState::Recovery : CatalogState::Normal);
    const QPointer<LibraryIndex> alive(this);
    Q_EMIT loaded();
    if (alive && pendingScan_ && !scanning_)
        refresh();
}

void LibraryIndex::refresh() {
    // A walk needs the loaded list: it holds what an offline folder keeps.
    if (loading_ || scanning_ || renaming_) {
        pendingScan_ = true;
        return;
    }
    pendingScan_ = false;
    scanning_ = true;
    Q_EMIT refreshStarted();

    ScanRequest request;
    request.roots = settings_.roots;
    request.previous = assets_;
    request.stop = stop_.get_token();
    request.progress = [guard = QPointer<LibraryIndex>(this)](std::size_t found) {
        postToMain([guard, found] {
            if (guard)
                Q_EMIT guard->progress(scanProgressText(found));
        });
    };
    runAndDeliver(
        scanQueue_, this, [request] { return walked(request); },
        [roots = settings_.roots](LibraryIndex& index, Outcome<RefreshedLibrary>& outcome) {
            index.saveRefresh(roots, outcome.get());
        });
}

void LibraryIndex::saveRefresh(const std::vector<std::string>& roots, const RefreshedLibrary& library) {
    runAndDeliver(
        catalogQueue_, this,
        [catalog = &catalog_, roots, unread = catalogUnread_, stop = stop_.get_token(),
         library = library]() mutable {
            if (unread)
                takeKeptRows(*catalog, roots, library);
            if (library.notice.empty())
                library.notice = catalog->save(*library.scan.assets, *library.keys, stop);
            return library;
        },
        [roots](LibraryIndex& index, Outcome<RefreshedLibrary>& outcome) {
            index.finishRefresh(roots, outcome.get());
        });
}

void LibraryIndex::finishRefresh(const std::vector<std::string>& roots, const RefreshedLibrary& library) {
    RefreshReport report;
    report.saved = library.notice.empty();
    report.followUp = pendingScan_ || roots != settings_.roots;
    report.offline = library.scan.offline;
    report.unreadable = library.scan.unreadable;
    pendingScan_ = false;
    assets_ = library.scan.assets;
    keys_ = library.keys;
    scanning_ = false;
    catalogRecovery_ = !report.saved;
    if (report.saved || report.offline.empty())
        catalogUnread_ = false;
    scanSummary_ = scanSummaryText(roots.size(), library.scan, library.notice);
    Q_EMIT refreshFinished(report);
}

bool LibraryIndex::rename(const Asset& asset, const std::string& baseName) {
    if (!canRename())
        return false;
    renaming_ = true;
    struct Renamed {
        Asset asset;
        RenamedLibrary library;
    };
    runAndDeliver(
        catalogQueue_, this,
        [asset, baseName, assets = assets_, keys = keys_] {
            Renamed result;
            result.asset = renameAsset(asset, baseName);
            result.library = withRenamed(assets, keys, asset.path, result.asset);
            return result;
        },
        [asset](LibraryIndex& index, Outcome<Renamed>& outcome) {
            RenameReport report{asset.path, asset, {}};
            RenamedLibrary library{index.assets_, index.keys_};
            try {
                const Renamed& result = outcome.get();
                report.asset = result.asset;
                library = result.library;
            } catch (const std::exception& error) {
                report.error = error.what();
            }
            index.finishRename(report, library);
        });
    return true;
}

void LibraryIndex::finishRename(const RenameReport& report, const RenamedLibrary& library) {
    renaming_ = false;
    assets_ = library.assets;
    keys_ = library.keys;
    const QPointer<LibraryIndex> alive(this);
    Q_EMIT renamed(report);
    if (!alive)
        return;
    if (report.error.empty())
        saveRename();
    if (pendingScan_ && !scanning_)
        refresh();
}

void LibraryIndex::saveRename() {
    // Written over the catalog, a list that does not come from it would drop rows for good.
    runAndDeliver(
        catalogQueue_, this,
        [catalog = &catalog_, unread = catalogUnread_, assets = assets_, keys = keys_] {
            return !unread && catalog->save(*assets, *keys).empty();
        },
        [](LibraryIndex& index, Outcome<bool>& outcome) { Q_EMIT index.renameSaved(outcome.get()); });
}

}  // namespace morvane
