#include "organizer_ui/folder_list_model.h"

#include <QDateTime>
#include <algorithm>
#include <utility>

#include "support/format_text.h"

namespace morvane {

FolderListModel::FolderListModel(Choosable choosable, QObject* parent)
    : QAbstractListModel(parent), choosable_(choosable) {}

void FolderListModel::setListing(FolderListing listing) {
    beginResetModel();
    listing_ = std::move(listing);
    endResetModel();
}

int FolderListModel::rowOf(const std::string& name) const {
    const auto& entries = listing_.entries;
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&name](const FolderEntry& candidate) { return candidate.name == name; });
    return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

bool FolderListModel::canChoose(int row) const {
    switch (choosable_) {
        case Choosable::folders:
            return entry(row).isFolder;
        case Choosable::files:
            return !entry(row).isFolder;
        case Choosable::filesAndFolders:
            break;
    }
    return true;
}

int FolderListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(listing_.entries.size());
}

QVariant FolderListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const FolderEntry& shown = entry(index.row());
    switch (role) {
        case Qt::DisplayRole:
            return QString::fromStdString(shown.name);
        case SymbolRole:
            return shown.isFolder ? QStringLiteral("folder") : QStringLiteral("doc");
        case SizeRole:
            return shown.isFolder ? QString() : QString::fromStdString(formatBytes(shown.size));
        case DateRole:
            return QDateTime::fromSecsSinceEpoch(shown.modified).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
        case FolderRole:
            return shown.isFolder;
        case Qt::AccessibleTextRole:
            return QString::fromStdString(shown.name) +
                   (shown.isFolder ? QStringLiteral("，文件夹") : QStringLiteral("，文件"));
        default:
            return {};
    }
}

Qt::ItemFlags FolderListModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    // What cannot be chosen stays readable for orientation; folders can always be entered.
    if (!entry(index.row()).isFolder && !canChoose(index.row()))
        return Qt::ItemNeverHasChildren;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

}  // namespace morvane
