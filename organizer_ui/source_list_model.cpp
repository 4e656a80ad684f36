#include "organizer_ui/source_list_model.h"

#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <unordered_set>
#include <utility>

#include "app/theme/plain_tool_tip.h"
#include "project/planning.h"
#include "support/path_text.h"

namespace morvane {

namespace {

/// The text under which two sources are the same.
std::string identity(const FileUrl& url) {
    return url.isFile() ? standardizedPath(url.path) : url.other;
}

QString symbolFor(SourceKind kind, const FileUrl& source) {
    switch (kind) {
        case SourceKind::cameraCard:
            return QStringLiteral("sdcard");
        case SourceKind::folder:
            return QStringLiteral("folder");
        case SourceKind::file:
        case SourceKind::notLocal:
            return QStringLiteral("doc");
        case SourceKind::missing:
            return QStringLiteral("exclamationmark.triangle");
        case SourceKind::unknown:
            break;
    }
    return pathExtension(source.path).empty() ? QStringLiteral("folder") : QStringLiteral("doc");
}

QString folderText(SourceKind kind, const FileUrl& source) {
    const QString path = source.isFile() ? QString::fromStdString(std::string(parentPath(source.path)))
                                         : QString::fromStdString(source.other);
    return kind == SourceKind::missing ? QStringLiteral("找不到 · ") + path : path;
}

}  // namespace

SourceKind findSourceKind(const FileUrl& source) {
    if (!source.isFile())
        return SourceKind::notLocal;
    struct stat found {};
    if (::stat(source.path.c_str(), &found) != 0)
        return SourceKind::missing;
    if (!S_ISDIR(found.st_mode))
        return SourceKind::file;
    return cardFolder(source) ? SourceKind::cameraCard : SourceKind::folder;
}

std::vector<FileUrl> newSources(const std::vector<FileUrl>& present, const std::vector<FileUrl>& added) {
    std::unordered_set<std::string> known;
    for (const FileUrl& url : present)
        known.insert(identity(url));
    std::vector<FileUrl> fresh;
    for (FileUrl url : added) {
        if (!known.insert(identity(url)).second)
            continue;
        if (url.isFile())
            url.path = standardizedPath(url.path);
        fresh.push_back(std::move(url));
    }
    return fresh;
}

std::vector<FileUrl> SourceListModel::append(const std::vector<FileUrl>& urls) {
    std::vector<FileUrl> fresh = newSources(sources_, urls);
    if (fresh.empty())
        return fresh;
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(fresh.size()) - 1);
    sources_.insert(sources_.end(), fresh.begin(), fresh.end());
    kinds_.resize(sources_.size(), SourceKind::unknown);
    endInsertRows();
    return fresh;
}

void SourceListModel::remove(std::vector<int> rows) {
    std::sort(rows.begin(), rows.end(), std::greater<>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (const int row : rows) {
        if (row < 0 || row >= rowCount())
            continue;
        beginRemoveRows({}, row, row);
        sources_.erase(sources_.begin() + row);
        kinds_.erase(kinds_.begin() + row);
        endRemoveRows();
    }
}

void SourceListModel::setKinds(const std::unordered_map<std::string, SourceKind>& kinds) {
    for (std::size_t row = 0; row < sources_.size(); ++row) {
        const auto found = kinds.find(identity(sources_[row]));
        if (found == kinds.end() || kinds_[row] == found->second)
            continue;
        kinds_[row] = found->second;
        const QModelIndex changed = index(static_cast<int>(row));
        Q_EMIT dataChanged(changed, changed);
    }
}

int SourceListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(sources_.size());
}

QVariant SourceListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const FileUrl& source = sources_[row];
    switch (role) {
        case Qt::DisplayRole:
            return QString::fromStdString(source.lastComponent());
        case PathRole:
            return folderText(kinds_[row], source);
        case SymbolRole:
            return symbolFor(kinds_[row], source);
        case MissingRole:
            return kinds_[row] == SourceKind::missing;
        case Qt::ToolTipRole:
            return plainToolTip(QString::fromStdString(source.isFile() ? source.path : source.other));
        case Qt::AccessibleDescriptionRole:
            return QString::fromStdString(source.isFile() ? source.path : source.other);
        case Qt::AccessibleTextRole:
            return QString::fromStdString(source.lastComponent()) + QStringLiteral("，") +
                   folderText(kinds_[row], source);
        default:
            return {};
    }
}

}  // namespace morvane
