// The category tree's view: rows 32 high, 3 apart, indented by 13 a level, with a chevron in a slot of 16
// before the title.
#pragma once

#include <QItemSelectionModel>
#include <QPersistentModelIndex>
#include <QTreeView>

namespace morvane {

class CategoryTreeView final : public QTreeView {
    Q_OBJECT
public:
    explicit CategoryTreeView(QWidget* parent = nullptr);

    void reset() override;
    /// Lays out rows that were inserted or opened, now instead of later.
    void layOut() { executeDelayedItemsLayout(); }
    /// The chevron's slot of an expandable entry, in viewport coordinates; it is the click target too.
    QRect chevronSlot(const QModelIndex& index) const;

protected:
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    /// One entry stays selected, whatever is clicked: the list always shows somebody's content.
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    int levelOf(const QModelIndex& index) const;
    bool toggleAt(const QPoint& position);
    void setHovered(const QModelIndex& index);

    QPersistentModelIndex hovered_;
};

}  // namespace morvane
