// What the library writes about an asset: pure functions, one per text. Texts of the catalog are
// UTF-8 bytes; a byte that is no UTF-8 shows as the replacement character and harms nothing else.
#pragma once

#include "catalog/asset_list.h"

#include <QString>

#include <cstdint>
#include <string_view>

namespace morvane {

enum class Favorite { No, Yes };

/// UTF-8 bytes as text for the screen.
QString shownText(std::string_view bytes);
/// `asset` as a row; lives as long as `asset`.
AssetView viewOf(const Asset& asset);

/// Last path component.
QString fileNameText(const AssetView& asset);
/// File name, after "★ " when it is a favourite.
QString titleText(const AssetView& asset, Favorite favorite);
/// "音频 · WAV"; a name without an extension gives "其他 · ".
QString subtitleText(const AssetView& asset);
/// Folder inside the library folder; empty for a file that lies directly in it.
QString folderText(const AssetView& asset);
/// Size in the file style ("86.4 MB").
QString sizeText(const AssetView& asset);
/// The two lines under the preview's title: kind, extension and size; then the folder.
QString detailText(const AssetView& asset);
/// What a screen reader says for a row: title without the star, subtitle, folder, size, and "已收藏"
/// for a favourite, joined by "，".
QString rowAccessibleText(const AssetView& asset, Favorite favorite);

/// "已选择 4 个文件，可一起拖出或复制。"
QString selectionNotice(std::int64_t rows);
/// Minutes and seconds, "62:05" for 3,725; minutes are not wrapped into hours. "0:00" for what is
/// not finite or below zero.
QString clockText(double seconds);
/// "0:12 / 3:18".
QString clockPairText(double current, double duration);

}  // namespace morvane
