// The entries of one folder as a list model.
#pragma once

#include <vector>

#include <QAbstractListModel>

#include "organizer_ui/folder_listing.h"

namespace morvane {

/// What an open panel lets the user choose.
enum class Choosable { filesAndFolders, folders, files };

/// Main thread. Names and details are made for visible rows only.
class FolderListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        SymbolRole = Qt::UserRole,  ///< QString, symbol name
        SizeRole,                   ///< QString, empty for folders
        DateRole,                   ///< QString, time of the last change
        FolderRole                  ///< bool
    };

    explicit FolderListModel(Choosable choosable, QObject* parent = nullptr);

    void setListing(FolderListing listing);
    const FolderListing& listing() const { return listing_; }
    const FolderEntry& entry(int row) const { return listing_.entries[static_cast<std::size_t>(row)]; }
    /// The row of an entry's name; -1 for none.
    int rowOf(const std::string& name) const;
    /// Whether the entry is of a kind that may be chosen.
    bool canChoose(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    const Choosable choosable_;
    FolderListing listing_;
};

}  // namespace morvane
