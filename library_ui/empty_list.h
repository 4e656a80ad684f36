// What stands in the list's place when it has no rows.
#pragma once

#include <QString>
#include <QWidget>

#include <cstddef>

class QLabel;

namespace morvane {

class PushButton;
class SymbolView;

enum class EmptyState {
    None,          ///< nothing: the index is being read or built, or there are rows
    FirstStart,    ///< no library folder yet
    NoResult,      ///< nothing matches; there is a search text to clear
    NoResultBare,  ///< nothing matches and there is no search text
};

/// Everything the empty state depends on.
struct ListFacts {
    bool isLoading = false;   ///< the catalog is being read for the first time
    bool isScanning = false;  ///< a refresh runs
    std::size_t assets = 0;   ///< in the index
    std::size_t roots = 0;    ///< library folders
    std::size_t rows = 0;     ///< of the list
    QString searchText;
};
/// The rule: rows, or a catalog not read yet, show nothing in their place; otherwise no library folders means
/// FirstStart, and an index without assets that is being built shows nothing. A search text of spaces counts
/// as none.
EmptyState emptyStateFor(const ListFacts& facts);

class EmptyList final : public QWidget {
    Q_OBJECT
public:
    explicit EmptyList(QWidget* parent);

    EmptyState state() const { return state_; }
    void setState(EmptyState state);

Q_SIGNALS:
    void addFolderRequested();
    void clearSearchRequested();

private:
    SymbolView* symbol_;
    QLabel* heading_;
    QLabel* advice_;
    PushButton* addFolder_;
    PushButton* clearSearch_;
    EmptyState state_ = EmptyState::None;
};

}  // namespace morvane
