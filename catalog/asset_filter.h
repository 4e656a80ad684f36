// Which assets the list shows: the pure filter, and the owner of its requests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <QObject>
#include <QTimer>

#include "catalog/asset_list.h"
#include "catalog/catalog_repository.h"
#include "catalog/search_keys.h"
#include "support/serial_queue.h"

namespace morvane {

namespace scope {
inline constexpr std::string_view all = "all";
inline constexpr std::string_view favorites = "favorites";
inline constexpr std::string_view recent = "recent";
}  // namespace scope

/// What one filter pass needs. Plain values and shared lists: safe to hand to another thread.
struct FilterRequest {
    std::vector<std::string> words;  ///< from searchWords; all must be contained
    KindFilter kind;
    std::string scope{scope::all};              ///< "all", "favorites", "recent" or a folder path
    std::unordered_set<std::string> favorites;  ///< read for the scope "favorites" only
    std::vector<std::string> recent;            ///< read for the scope "recent" only
    SharedAssets assets;
    SharedKeys keys;
};

/// Rows of `assets` in display order.
struct FilterResult {
    SharedAssets assets;
    std::vector<std::uint32_t> rows;

    std::size_t size() const { return rows.size(); }
    AssetView at(std::size_t index) const { return assets->at(rows[index]); }
};

/// How a folder scope is compared with a path.
enum class FolderRule {
    Catalog,  ///< as CatalogStore::query does: trailing "/" ignored, ASCII letters in either case
    Plain,    ///< the path begins with the scope text and "/"
};

/// The rows of `request.assets` that match. With FolderRule::Catalog exactly the rows, in the order, that
/// CatalogStore::query gives for a catalog that holds this list. Any thread.
FilterResult filterInMemory(const FilterRequest& request, FolderRule rule);

/// Text of the result-count label: "12,486 项".
std::string resultCountText(std::size_t count);
/// Status line after a pass while no refresh runs.
std::string statusAfterFilter(std::size_t count, const std::string& scanSummary);

/// Runs filter passes off the main thread and keeps the newest result. Main thread only.
///
/// A pass reads nothing but the lists it was given, so it has a queue of its own and never waits behind a
/// save. While the repository is in step with its last list the result is what the catalog's query gives;
/// otherwise the folder scope follows the plain rule.
class AssetFilter : public QObject {
    Q_OBJECT
public:
    /// `catalog` is only asked whether it is in step; it must outlive this object.
    explicit AssetFilter(const CatalogRepository& catalog, QObject* parent = nullptr);
    ~AssetFilter() override;

    const std::string& filterKey() const { return filterKey_; }
    void setFilterKey(std::string key) { filterKey_ = std::move(key); }
    /// The newest delivered result; an empty list before the first one.
    const FilterResult& filtered() const { return filtered_; }
    std::int64_t filterGeneration() const { return filterGeneration_; }
    /// Whether a pass has been started whose result is not delivered yet.
    bool isRunning() const { return deliveredGeneration_ != filterGeneration_; }
    /// Whether the search text has changed and not rested yet.
    bool hasQueryWork() const { return queryWork_.isActive(); }

    /// Starts a pass; every earlier one that has not been delivered is void. `request.scope` is taken from
    /// filterKey().
    void apply(FilterRequest request);
    /// Emits due() 0.12 seconds after the last call.
    void applyLater();

Q_SIGNALS:
    /// The search text has rested: the receiver starts a pass.
    void due();
    /// filtered() has changed. Once per pass that was not overtaken.
    void finished();

private:
    const CatalogRepository& catalog_;
    std::int64_t filterGeneration_ = 0;
    std::int64_t deliveredGeneration_ = 0;
    FilterResult filtered_;
    std::string filterKey_{scope::all};
    QTimer queryWork_;
    SerialQueue queue_;
};

}  // namespace morvane
