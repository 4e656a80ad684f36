// Renaming a media file on disk, and the list that follows it.
#pragma once

#include <string>
#include <string_view>

#include "catalog/asset_list.h"
#include "catalog/catalog_errors.h"
#include "catalog/search_keys.h"

namespace morvane {

/// The path `asset` gets under `baseName`: same folder, trimmed name, same extension. Throws RenameError
/// (invalidName). Touches no disk.
std::string renameTarget(const Asset& asset, std::string_view baseName);

/// Renames the file and returns the asset with its new path and relative. Never replaces a file: throws
/// RenameError (invalidName, nameTaken) or, when the move itself fails, std::system_error. The same name
/// moves nothing. Any thread but the main one: the disk can be slow.
Asset renameAsset(const Asset& asset, std::string_view baseName);

/// A list and its keys after a rename: `renamed` in the place of `oldPath`, sorted again. A list that does
/// not hold `oldPath` comes back as it is.
struct RenamedLibrary {
    SharedAssets assets;
    SharedKeys keys;
};
RenamedLibrary withRenamed(const SharedAssets& assets, const SharedKeys& keys, const std::string& oldPath,
                           const Asset& renamed);

}  // namespace morvane
