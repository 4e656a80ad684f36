#include "library_ui/asset_text.h"

#include "support/format_text.h"
#include "support/path_text.h"

#include <QStringList>

#include <cmath>

namespace morvane {

namespace {

/// Lower-cased and then upper-cased, so that every spelling of an extension reads the same.
QString extensionText(const AssetView& asset) {
    return shownText(pathExtension(asset.path)).toLower().toUpper();
}

const QString& separator() {
    static const QString dot = QStringLiteral(" · ");
    return dot;
}

}  // namespace

QString shownText(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

AssetView viewOf(const Asset& asset) {
    return {.path = asset.path,
            .root = asset.root,
            .relative = asset.relative,
            .size = asset.size,
            .modified = asset.modified,
            .mediaKind = asset.mediaKind()};
}

QString fileNameText(const AssetView& asset) {
    return shownText(asset.name());
}

QString titleText(const AssetView& asset, Favorite favorite) {
    return favorite == Favorite::Yes ? QStringLiteral("★ ") + fileNameText(asset) : fileNameText(asset);
}

QString subtitleText(const AssetView& asset) {
    return shownText(asset.kind()) + separator() + extensionText(asset);
}

QString folderText(const AssetView& asset) {
    return shownText(asset.folder());
}

QString sizeText(const AssetView& asset) {
    return shownText(formatBytes(asset.size));
}

QString detailText(const AssetView& asset) {
    return subtitleText(asset) + separator() + sizeText(asset) + QLatin1Char('\n') + folderText(asset);
}

QString rowAccessibleText(const AssetView& asset, Favorite favorite) {
    QStringList parts = {fileNameText(asset), subtitleText(asset), folderText(asset), sizeText(asset)};
    if (favorite == Favorite::Yes)
        parts << QStringLiteral("已收藏");
    parts.removeAll(QString());
    return parts.join(QStringLiteral("，"));
}

QString selectionNotice(std::int64_t rows) {
    return QStringLiteral("已选择 %1 个文件，可一起拖出或复制。").arg(rows);
}

QString clockText(double seconds) {
    constexpr double most = 9e15;
    if (!std::isfinite(seconds) || seconds < 0 || seconds > most)
        return QStringLiteral("0:00");
    const auto whole = static_cast<std::int64_t>(seconds);
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString clockPairText(double current, double duration) {
    return QStringLiteral("%1 / %2").arg(clockText(current), clockText(duration));
}

}  // namespace morvane
