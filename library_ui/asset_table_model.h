// The asset list as a model: rows of a shared, unchanging list, given by row numbers. Nothing is kept per
// row; every text is made when a row is painted.
#pragma once

#include "library_ui/asset_text.h"

#include "catalog/asset_filter.h"

#include <QAbstractTableModel>

#include <functional>
#include <string>

namespace morvane {

class AssetTableModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { NameColumn, FolderColumn, SizeColumn, ColumnCount };
    /// Beside Qt's own roles.
    enum Role {
        IdentifierRole = Qt::UserRole,  ///< of a header section: "name", "folder", "size"
        SubtitleRole,                   ///< of the name column
        SymbolRole,                     ///< name of the kind's symbol
        AudioRole                       ///< whether the kind is audio (tinted in the accent)
    };

    explicit AssetTableModel(QObject* parent = nullptr);

    /// Replaces all rows.
    void setRows(FilterResult rows);
    const FilterResult& rows() const { return rows_; }
    /// The function is asked for rows being painted only.
    void setFavoriteTest(std::function<bool(const std::string& path)> isFavorite);
    Favorite favoriteAt(int row) const;
    /// Row of `path`, or -1. Linear in the rows, without building a text.
    int rowOfPath(const std::string& path) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }
    /// The first row from `start` on, wrapping, whose file name begins with `text` in any case: what typing
    /// in the list looks for. Without building the texts of the rows passed over.
    int rowBeginningWith(const QString& text, int start) const;

private:
    QVariant nameData(const AssetView& asset, int row, int role) const;

    FilterResult rows_;
    std::function<bool(const std::string&)> isFavorite_;
};

}  // namespace morvane
