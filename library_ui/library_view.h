// The library workspace below the header: category tree, asset list and preview side by side. It shows what
// it is given and says by signals, with values, what the user wants; it knows no settings, no store and no
// queue.
#pragma once

#include "library_ui/empty_list.h"
#include "library_ui/file_checker.h"
#include "library_ui/library_layout.h"

#include "catalog/asset_filter.h"
#include "catalog/category.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QLabel;
class QTreeView;

namespace morvane {

class AssetTable;
class AssetTableModel;
class CategoryTreeModel;
class CategoryTreeView;
class FileTable;
class LibrarySplitter;
class SegmentedControl;

/// Whether the list stays where it was scrolled to (a refresh) or begins at its top (another question).
enum class ListPosition { Keep, Top };

class LibraryView final : public QWidget {
    Q_OBJECT
public:
    /// Makes the controls; they are laid out by buildManagementView. `checker` must outlive the view.
    explicit LibraryView(FileChecker& checker, QWidget* parent = nullptr);
    ~LibraryView() override;

    /// Lays out the three panes, `preview` (taken over) on the right; they scroll sideways where the view is
    /// narrower than pane::leastTotal. Once.
    void buildManagementView(QWidget* preview);
    /// The built workspace (this view); null before buildManagementView.
    QWidget* managementView() { return splitter_ == nullptr ? nullptr : this; }

    FileTable& table() const;
    QTreeView& outline() const;
    SegmentedControl& kindControl() const { return *kindControl_; }
    QLabel& resultCount() const { return *resultCount_; }
    /// True while the view itself changes a selection: no signal of it follows.
    bool suppressSelection() const { return suppressSelection_; }

    /// Replaces the list, deselects everything, then selects the first row whose path is `selectedPath`, if
    /// any. Sets the result count. Returns whether that row was found. Emits nothing.
    bool showRows(FilterResult rows, const std::optional<std::string>& selectedPath, ListPosition position);
    const FilterResult& rows() const;
    /// Tells which paths carry the star; asked only for rows being painted. The view keeps the function.
    void setFavoriteTest(std::function<bool(const std::string& path)> isFavorite);
    /// Repaints the stars after the favourites changed.
    void favoritesChanged();
    void setEmptyState(EmptyState state);

    /// Replaces the tree, expands the top level and selects the first visible row with `filterKey`. Emits
    /// nothing.
    void showCategories(const CategoryList& categories, const std::string& filterKey);
    /// Repaints the count of the top-level entry at `row` after it was changed in place.
    void categoryCountChanged(int row);
    /// Selects the first visible row with `filterKey`, or none. Emits nothing.
    void selectCategory(const std::string& filterKey);

    /// The assets an action applies to: while a context-menu action runs that was opened on a row outside the
    /// selection, that row; otherwise all selected rows, in row order.
    std::vector<Asset> actionAssets() const;
    /// The same as files to act on, cheaper for large selections.
    std::vector<FileRef> actionFiles() const;
    /// How many assets that is; cheap for any selection.
    std::size_t actionCount() const;
    /// How many rows are selected; cheap for any selection.
    std::size_t selectedCount() const;
    /// Rows near the current one, nearest first, at most `count` on each side: what may be shown next.
    std::vector<Asset> neighbours(int count) const;

    LibraryLayout libraryLayout() const;
    void setLibraryLayout(const LibraryLayout& layout);

Q_SIGNALS:
    // Only the user's doing is reported.
    /// The list's selection changed and is not empty: `asset` is the one to show, of `selected` rows.
    void assetChosen(const morvane::Asset& asset, std::size_t selected);
    /// A tree row was selected.
    void categoryChosen(const std::string& key);
    /// Segment index, 0 to 4.
    void kindChosen(int segment);
    /// Double click or context menu.
    void playToggled();
    void revealRequested();
    void copyRequested();
    void copyPathRequested();
    void favoriteToggled();
    void renameRequested();
    /// The buttons of the empty list.
    void addFolderRequested();
    void clearSearchRequested();
    /// The user moved a divider or a column edge.
    void libraryLayoutChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static QStringList kindLabels();
    void makeTable();
    void makeOutline();
    void openContextMenu(const QPoint& position, int row);
    void reportSelection();
    void prepareDrag();
    void runDrag(const std::vector<std::string>& existing);
    template <class Take>
    void forActionRows(Take take) const;

    FileChecker& checker_;
    AssetTableModel* assetModel_;
    CategoryTreeModel* categoryModel_;
    AssetTable* table_;
    CategoryTreeView* outline_;
    SegmentedControl* kindControl_;
    QLabel* resultCount_;
    EmptyList* emptyList_;
    LibrarySplitter* splitter_ = nullptr;
    bool suppressSelection_ = false;
    /// The row a context-menu action is being invoked on; -1 otherwise.
    int clickedRow_ = -1;
};

}  // namespace morvane
