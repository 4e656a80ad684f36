#include "catalog/rename_asset.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "catalog/library_scan.h"
#include "platform/exclusive_rename.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

bool existsAt(const std::string& path) {
    struct stat attributes {};
    return ::stat(path.c_str(), &attributes) == 0;
}

}  // namespace

std::string renameTarget(const Asset& asset, std::string_view baseName) {
    constexpr std::string_view forbidden("/:\0\n", 4);
    std::string name = trimmed(baseName);
    if (name.empty() || name.starts_with('.') || name.find_first_of(forbidden) != std::string::npos)
        throw RenameError(renameText::invalidName);
    const std::string_view extension = pathExtension(asset.path);
    if (!extension.empty())
        name.append(".").append(extension);
    return joinPath(parentPath(asset.path), name);
}

Asset renameAsset(const Asset& asset, std::string_view baseName) {
    const std::string target = renameTarget(asset, baseName);
    if (target == asset.path)
        return asset;
    if (existsAt(target))
        throw RenameError(renameText::nameTaken);
    const int error = renameExclusively(asset.path, target);
    if (error == EEXIST)
        throw RenameError(renameText::nameTaken);
    if (error != 0)
        throw std::system_error(error, std::generic_category());
    Asset renamed = asset;
    renamed.path = target;
    renamed.relative = std::string(relativePath(target, asset.root));
    return renamed;
}

RenamedLibrary withRenamed(const SharedAssets& assets, const SharedKeys& keys, const std::string& oldPath,
                           const Asset& renamed) {
    const auto oldRow = assets->rowOf(oldPath);
    if (!oldRow || renamed.path == oldPath)
        return {assets, keys};
    AssetList::Builder builder;
    for (std::size_t row = 0; row < assets->size(); ++row) {
        if (row == *oldRow)
            builder.add(renamed.path, renamed.root, renamed.relative, renamed.size, renamed.modified);
        else if (assets->path(row) != renamed.path)  // an entry left from a file that was there before
            builder.add(assets->at(row));
    }
    RenamedLibrary library;
    library.assets = builder.finishSorted();
    library.keys = std::make_shared<const SearchKeys>(*library.assets, *assets, *keys);
    return library;
}

}  // namespace morvane
