// The table of files: rows painted whole, space bar wired, header text set in from the edge.
#pragma once

#include <QHeaderView>
#include <QTableView>
#include <functional>
#include <vector>

namespace morvane {

/// A horizontal header 28 high whose labels may be set in per section.
class TableHeader : public QHeaderView {
    Q_OBJECT

public:
    explicit TableHeader(QWidget* parent = nullptr);

    /// Room in logical pixels left and right of the label of logical `section`; 4 and 4 unless told.
    void setTextInset(int section, int left, int right);

    QSize sizeHint() const override;

protected:
    void paintSection(QPainter* painter, const QRect& rect, int section) const override;

private:
    struct Inset {
        int left = 4;
        int right = 4;
    };
    std::vector<Inset> insets_;
};

/// Rows 48 high, whole rows selected, no grid, the header a TableHeader. The background of selected and
/// hovered rows and the ring of the current one are painted by the table (MRVRowView); delegates paint
/// content only. Space calls onSpace and is swallowed even when onSpace is not set.
class FileTable : public QTableView {
    Q_OBJECT

public:
    explicit FileTable(QWidget* parent = nullptr);

    std::function<void()> onSpace;

    TableHeader* tableHeader() const { return header_; }
    /// The row under the pointer, or -1.
    int hoveredRow() const { return hovered_; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void setHovered(int row);
    void updateRow(int row);
    void paintRows();

    TableHeader* const header_;
    int hovered_ = -1;
};

}  // namespace morvane
