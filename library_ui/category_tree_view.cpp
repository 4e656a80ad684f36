#include "library_ui/category_tree_view.h"

#include "library_ui/category_delegate.h"
#include "library_ui/category_tree_model.h"

#include "app/theme/focus_ring.h"
#include "app/theme/paint.h"
#include "app/theme/row_view.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QHeaderView>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QPainter>

namespace morvane {

namespace {

constexpr int levelIndentation = 13;
constexpr int slotLeft = 8;
constexpr int slotWidth = 16;
constexpr int chevronSize = 11;
/// The column ends this far before the pane does.
constexpr int trailingInset = 5;
constexpr int lineLeft = 14;
constexpr int lineRight = 12;

}  // namespace

CategoryTreeView::CategoryTreeView(QWidget* parent) : QTreeView(parent) {
    setHeaderHidden(true);
    header()->setStretchLastSection(true);
    setFrameShape(QFrame::NoFrame);
    setIndentation(levelIndentation);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabKeyNavigation(false);
    setItemDelegate(new CategoryDelegate(this));
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
}

void CategoryTreeView::reset() {
    hovered_ = QPersistentModelIndex();
    QTreeView::reset();
}

int CategoryTreeView::levelOf(const QModelIndex& index) const {
    int level = 0;
    for (QModelIndex above = index.parent(); above.isValid(); above = above.parent())
        ++level;
    return level;
}

QRect CategoryTreeView::chevronSlot(const QModelIndex& index) const {
    if (model() == nullptr || model()->rowCount(index) == 0)
        return {};
    const QRect row = visualRect(index);
    return {slotLeft + levelOf(index) * levelIndentation, row.top(), slotWidth, CategoryDelegate::rowHeight};
}

void CategoryTreeView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    const QRect row(0, option.rect.top(), viewport()->width(), CategoryDelegate::rowHeight);
    MRVRowView::States states = MRVRowView::Plain;
    states.setFlag(MRVRowView::Selected, selectionModel()->isSelected(index));
    states.setFlag(MRVRowView::Hovered, hovered_ == index);
    states.setFlag(MRVRowView::Focused, focusRingShown(this));
    states.setFlag(MRVRowView::Current, currentIndex() == index);
    MRVRowView::drawSelection(*painter, row, states);

    const int left = slotLeft + levelOf(index) * levelIndentation;
    if (model()->rowCount(index) > 0) {
        const QRect slot(left, row.top(), slotWidth, row.height());
        QRect chevron(0, 0, chevronSize, chevronSize);
        chevron.moveCenter(slot.center());
        paintSymbol(*painter, chevron,
                    isExpanded(index) ? QStringLiteral("chevron.down") : QStringLiteral("chevron.right"),
                    MRVTheme::faint());
    }
    if (index.data(CategoryTreeModel::LineBelowRole).toBool()) {
        const QRect line(lineLeft, row.bottom() + 2, viewport()->width() - lineLeft - lineRight, 1);
        paintHairline(*painter, line, Qt::TopEdge, MRVTheme::line());
    }
    QStyleOptionViewItem content = option;
    content.rect = QRect(left + slotWidth, row.top(), viewport()->width() - trailingInset - left - slotWidth,
                         option.rect.height());
    itemDelegate()->paint(painter, content, index);
}

void CategoryTreeView::drawBranches(QPainter* /*painter*/, const QRect& /*rect*/,
                                    const QModelIndex& /*index*/) const {
    // drawRow has drawn the chevron.
}

bool CategoryTreeView::toggleAt(const QPoint& position) {
    const QModelIndex index = indexAt(position);
    if (!index.isValid() || position.x() >= chevronSlot(index).right() + 1 || chevronSlot(index).isEmpty())
        return false;
    setExpanded(index, !isExpanded(index));
    return true;
}

void CategoryTreeView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && toggleAt(event->position().toPoint()))
        return;
    QTreeView::mousePressEvent(event);
}

void CategoryTreeView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && toggleAt(event->position().toPoint()))
        return;
    QTreeView::mouseDoubleClickEvent(event);
}

void CategoryTreeView::setHovered(const QModelIndex& index) {
    if (hovered_ == index)
        return;
    hovered_ = index;
    viewport()->update();
}

bool CategoryTreeView::viewportEvent(QEvent* event) {
    switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
            setHovered(indexAt(static_cast<QHoverEvent*>(event)->position().toPoint()));
            break;
        case QEvent::HoverLeave:
        case QEvent::Leave:
            setHovered({});
            break;
        default:
            break;
    }
    return QTreeView::viewportEvent(event);
}

QItemSelectionModel::SelectionFlags CategoryTreeView::selectionCommand(const QModelIndex& index,
                                                                       const QEvent* event) const {
    if (!index.isValid())
        return QItemSelectionModel::NoUpdate;
    const QItemSelectionModel::SelectionFlags command = QTreeView::selectionCommand(index, event);
    const bool clears = command & (QItemSelectionModel::Toggle | QItemSelectionModel::Deselect);
    return clears ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows : command;
}

void CategoryTreeView::focusInEvent(QFocusEvent* event) {
    QTreeView::focusInEvent(event);
    viewport()->update();
}

void CategoryTreeView::focusOutEvent(QFocusEvent* event) {
    QTreeView::focusOutEvent(event);
    viewport()->update();
}

}  // namespace morvane
