// The organizer's sources as a list model, each with what it was found to be.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <QAbstractListModel>

#include "support/file_url.h"

namespace morvane {

/// What stands at a source's location. `unknown` until a look at its disk came back.
enum class SourceKind { unknown, missing, file, folder, cameraCard, notLocal };

/// Looks at the disk, which may be slow: never on the main thread. A link counts as the
/// file or folder it points to and is not looked into.
SourceKind findSourceKind(const FileUrl& source);

/// `added` standardized by text, without what `present` or an earlier entry of `added` already names.
std::vector<FileUrl> newSources(const std::vector<FileUrl>& present, const std::vector<FileUrl>& added);

/// Main thread.
class SourceListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        PathRole = Qt::UserRole,  ///< QString, the folder that holds the source
        SymbolRole,               ///< QString, symbol name
        MissingRole               ///< bool, nothing was found there
    };

    using QAbstractListModel::QAbstractListModel;

    const std::vector<FileUrl>& sources() const { return sources_; }
    /// Appends what newSources leaves and returns it.
    std::vector<FileUrl> append(const std::vector<FileUrl>& urls);
    /// Removes these rows; numbers outside the list are passed over.
    void remove(std::vector<int> rows);
    /// Kinds by path, as they come back from the disk; paths no longer in the list are passed over.
    void setKinds(const std::unordered_map<std::string, SourceKind>& kinds);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<FileUrl> sources_;
    std::vector<SourceKind> kinds_;  ///< one per source
};

}  // namespace morvane
