#include "catalog/catalog_repository.h"

#include <exception>
#include <utility>

#include "support/atomic_file.h"
#include "support/path_text.h"

namespace morvane {

namespace {

constexpr const char* recoveryNotice = "索引数据库未就绪，正在使用恢复副本：";

SharedAssets recoveryCopy(const std::string& path) {
    try {
        return decodeAssets(readFile(path));
    } catch (const std::exception&) {
        return std::make_shared<const AssetList>();
    }
}

}  // namespace

CatalogRepository::CatalogRepository(std::string directory) : directory_(std::move(directory)) {}

CatalogStore& CatalogRepository::connection() {
    if (!database_)
        database_ = std::make_unique<CatalogStore>(joinPath(directory_, catalogFilename),
                                                   joinPath(directory_, legacyIndexFilename));
    return *database_;
}

LoadedLibrary CatalogRepository::load() {
    isSynchronized_ = false;
    LoadedLibrary library;
    try {
        library.assets = connection().query({});
        isSynchronized_ = true;
    } catch (const std::exception& error) {
        library.notice = std::string(recoveryNotice) + error.what();
        library.assets = recoveryCopy(joinPath(directory_, legacyIndexFilename));
    }
    library.keys = std::make_shared<const SearchKeys>(*library.assets);
    return library;
}

std::string CatalogRepository::save(const AssetList& list, const SearchKeys& keys,
                                    const std::stop_token& stop) {
    isSynchronized_ = false;
    try {
        connection().replace(list, keys, LegacyMark::Leave, stop);
    } catch (const std::exception&) {
        return notSavedNotice;
    }
    isSynchronized_ = true;
    return {};
}

SharedAssets CatalogRepository::query(const CatalogQuery& query) {
    try {
        return connection().query(query);
    } catch (...) {
        isSynchronized_ = false;
        throw;
    }
}

}  // namespace morvane
