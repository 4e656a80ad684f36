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
    None,          ///< nothing: the index is being read, or there are rows
    FirstStart,    ///< no library folder yet
    NoResult,      ///< nothing matches; there is a search text to clear
    NoResultBare,  ///< nothing matches and there is no search text
};

/// No before the catalog has been read once.
enum class CatalogLoaded { No, Yes };

/// The rule: rows, or a catalog not read yet, show nothing in their place; otherwise no library folders means
/// FirstStart. A search text of spaces counts as none.
EmptyState emptyStateFor(CatalogLoaded loaded, std::size_t roots, std::size_t rows,
                         const QString& searchText);

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
