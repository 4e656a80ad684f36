// How a row of the plan tree is drawn, and the tree view that goes with it.
#pragma once

#include <QStyledItemDelegate>
#include <QTreeView>

namespace morvane {

/// Symbol, title and, at the right, the detail in the secondary colour. Paints content only; the
/// tree paints what lies under it. A title that does not fit is elided (files in the middle), and the
/// tool tip then shows it whole, with the source of a planned file.
class ProjectOutlineCell : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;
};

/// Rows 28 high, one level 16 in, a chevron before what has rows below it.
class PlanTreeView : public QTreeView {
    Q_OBJECT

public:
    explicit PlanTreeView(QWidget* parent = nullptr);

protected:
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;
    void mousePressEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void setHovered(const QModelIndex& index);
    QRect rowRect(const QModelIndex& index) const;

    QPersistentModelIndex hovered_;
};

}  // namespace morvane
