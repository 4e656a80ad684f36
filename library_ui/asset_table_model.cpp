#include "library_ui/asset_table_model.h"

#include <algorithm>
#include <utility>

#include "app/theme/plain_tool_tip.h"

namespace morvane {

namespace {

struct ColumnInfo {
    const char* identifier;
    QString title;
};

const ColumnInfo& columnInfo(int column) {
    static const ColumnInfo columns[AssetTableModel::ColumnCount] = {
        {"name", QStringLiteral("素材名称")},
        {"folder", QStringLiteral("分类")},
        {"size", QStringLiteral("大小")},
    };
    return columns[column];
}

/// Whether a file name (UTF-8) begins with `text`, any case. Only as much of the name is decoded as needed.
bool beginsWith(std::string_view name, const QString& text) {
    constexpr qsizetype mostBytesPerUnit = 4;
    const auto length =
        std::min<std::size_t>(name.size(), static_cast<std::size_t>(text.size() * mostBytesPerUnit));
    return shownText(name.substr(0, length)).startsWith(text, Qt::CaseInsensitive);
}

}  // namespace

AssetTableModel::AssetTableModel(QObject* parent) : QAbstractTableModel(parent) {}

void AssetTableModel::setRows(FilterResult rows) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

void AssetTableModel::setFavoriteTest(std::function<bool(const std::string&)> isFavorite) {
    isFavorite_ = std::move(isFavorite);
}

Favorite AssetTableModel::favoriteAt(int row) const {
    const AssetView asset = rows_.at(static_cast<std::size_t>(row));
    return isFavorite_ && isFavorite_(std::string(asset.path)) ? Favorite::Yes : Favorite::No;
}

int AssetTableModel::rowOfPath(const std::string& path) const {
    if (!rows_.assets)
        return -1;
    const auto listRow = rows_.assets->rowOf(path);
    if (!listRow)
        return -1;
    const auto found = std::find(rows_.rows.begin(), rows_.rows.end(), *listRow);
    return found == rows_.rows.end() ? -1 : static_cast<int>(found - rows_.rows.begin());
}

int AssetTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int AssetTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant AssetTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || static_cast<std::size_t>(index.row()) >= rows_.size())
        return {};
    const AssetView asset = rows_.at(static_cast<std::size_t>(index.row()));
    switch (index.column()) {
        case NameColumn:
            return nameData(asset, index.row(), role);
        case FolderColumn:
            if (role == Qt::DisplayRole)
                return folderText(asset);
            if (role == Qt::ToolTipRole)
                return plainToolTip(folderText(asset));
            break;
        case SizeColumn:
            if (role == Qt::DisplayRole)
                return sizeText(asset);
            if (role == Qt::ToolTipRole)
                return plainToolTip(folderText(asset));
            if (role == Qt::TextAlignmentRole)
                return QVariant(Qt::AlignRight | Qt::AlignVCenter);
            break;
        default:
            break;
    }
    return {};
}

QVariant AssetTableModel::nameData(const AssetView& asset, int row, int role) const {
    switch (role) {
        case Qt::DisplayRole:
            return titleText(asset, favoriteAt(row));
        case Qt::ToolTipRole:
            return plainToolTip(shownText(asset.path));
        case Qt::AccessibleTextRole:
            return rowAccessibleText(asset, favoriteAt(row));
        case Qt::AccessibleDescriptionRole:
            return shownText(asset.kind());
        case SubtitleRole:
            return subtitleText(asset);
        case SymbolRole:
            return shownText(asset.symbol());
        case AudioRole:
            return asset.mediaKind == MediaKind::Audio;
        default:
            return {};
    }
}

QVariant AssetTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return columnInfo(section).title;
    if (role == IdentifierRole)
        return QString::fromLatin1(columnInfo(section).identifier);
    if (role == Qt::TextAlignmentRole)
        return QVariant((section == SizeColumn ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}

Qt::ItemFlags AssetTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
}

int AssetTableModel::rowBeginningWith(const QString& text, int start) const {
    const int count = rowCount();
    for (int i = 0; i < count && !text.isEmpty(); ++i) {
        const int row = (start + i) % count;
        if (beginsWith(rows_.at(static_cast<std::size_t>(row)).name(), text))
            return row;
    }
    return -1;
}

}  // namespace morvane
