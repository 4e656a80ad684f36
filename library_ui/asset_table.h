// The asset list's view: column widths, selection as ranges, right click and drag start.
#pragma once

#include "library_ui/library_layout.h"
#include "library_ui/row_range.h"

#include "app/theme/file_table.h"

#include <QElapsedTimer>

#include <string>
#include <vector>

namespace morvane {

class AssetTableModel;

class AssetTable final : public FileTable {
    Q_OBJECT
public:
    explicit AssetTable(AssetTableModel& model, QWidget* parent = nullptr);

    /// Ascending and apart.
    std::vector<RowRange> selectedRanges() const;
    /// The current row when it is selected, else the first selected one; -1 without a selection.
    int leadingRow() const;

    /// Only the column widths of `layout` are looked at.
    void setWanted(const LibraryLayout& layout);
    int wantedName() const { return wanted_.nameWidth; }
    int wantedFolder() const { return wanted_.folderWidth; }

    /// Types ahead: the first row whose name begins with what was typed quickly becomes the selected one.
    void keyboardSearch(const QString& search) override;

Q_SIGNALS:
    /// The context menu is wanted at `position` (global); `row` is the one under the pointer, -1 from the
    /// keyboard or beside the rows. The selection has not changed.
    void menuWanted(const QPoint& position, int row);
    /// A drag of the selected rows begins.
    void dragBegun();
    /// The user moved a column edge.
    void wantedChanged();

protected:
    void startDrag(Qt::DropActions actions) override;
    /// Rows only: Home and End go to the first and the last one, left and right stay.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpColumns();
    void fit();
    void sectionMoved(int section, int width);

    AssetTableModel& model_;
    LibraryLayout wanted_;
    bool fitting_ = false;
    /// From the start of a drag to the next press: the pointer no longer selects.
    bool dragWaits_ = false;
    QString typed_;
    QElapsedTimer sinceTyped_;
};

/// A small picture for the pointer to carry while `count` files are dragged, the first called `name`.
QPixmap dragPicture(const QString& name, const QString& symbol, std::size_t count, qreal ratio);

}  // namespace morvane
