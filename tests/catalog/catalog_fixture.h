// Lists as literals for the catalog's tests.
#pragma once

#include <sys/fsuid.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "catalog/asset_list.h"
#include "catalog/search_keys.h"

namespace morvane::test {

/// An asset below `root`, 100 bytes long, last changed at second 1000.
inline Asset assetBelow(const std::string& root, const std::string& relative) {
    return {root + "/" + relative, root, relative, 100, 1000};
}

inline SharedAssets listOf(const std::vector<Asset>& assets) {
    AssetList::Builder builder;
    for (const Asset& asset : assets)
        builder.add(asset.path, asset.root, asset.relative, asset.size, asset.modified);
    return builder.finish();
}

inline SharedKeys keysOf(const SharedAssets& list) {
    return std::make_shared<const SearchKeys>(*list);
}

inline std::vector<std::string> pathsOf(const AssetList& list) {
    std::vector<std::string> paths;
    for (std::size_t row = 0; row < list.size(); ++row)
        paths.emplace_back(list.path(row));
    return paths;
}

inline std::vector<std::string> relativesOf(const AssetList& list) {
    std::vector<std::string> relatives;
    for (std::size_t row = 0; row < list.size(); ++row)
        relatives.emplace_back(list.at(row).relative);
    return relatives;
}

/// While alive this thread, and threads it starts, meet file permissions as an ordinary user does: root
/// passes all of them.
class OrdinaryUser {
public:
    OrdinaryUser() {
        if (::geteuid() == 0)
            ::setfsuid(nobody);
    }
    ~OrdinaryUser() { ::setfsuid(::geteuid()); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
};

}  // namespace morvane::test
