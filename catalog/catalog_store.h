// The catalog database: the last indexed list in one SQLite file.
//
// Opening looks at the schema version before it changes anything: a file of a newer version stays as it is,
// byte for byte, with nothing left beside it. `replace` compares the table with the new list and writes the
// differences only, in one transaction, so an unchanged list writes no row.
#pragma once

#include <cstdint>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <vector>

#include "catalog/asset_list.h"
#include "catalog/search_keys.h"
#include "catalog/sqlite.h"

namespace morvane {

enum class LegacyMark { Leave, Imported };

/// What `query` asks of the catalog.
struct CatalogQuery {
    std::vector<std::string> words;
    KindFilter kind;
    std::string scope = "all";
    std::unordered_set<std::string> favorites;
    std::vector<std::string> recent;
};

/// Used on the catalog queue only.
class CatalogStore {
public:
    /// Opens or creates the database at `path` and imports `legacyPath` ("index.json") once. Throws
    /// CatalogError, also when the older index is damaged.
    CatalogStore(const std::string& path, const std::string& legacyPath);

    /// Makes the table equal to `list`, positions included; on a failure the old content stays. `keys`
    /// belong to `list`. Throws CatalogError, also when `stop` is used on the way.
    void replace(const AssetList& list, const SearchKeys& keys, LegacyMark mark,
                 const std::stop_token& stop = {});
    /// Every matching asset: words are folded and all contained in the search key; sorted by position, for
    /// the scope "recent" by the place in the recent list. Throws CatalogError.
    SharedAssets query(const CatalogQuery& query) const;

private:
    void importLegacy(const std::string& legacyPath);

    Connection database_;
};

}  // namespace morvane
