#include "organizer_ui/project_outline_cell.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include "app/theme/focus_ring.h"
#include "app/theme/plain_tool_tip.h"
#include "app/theme/row_view.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"
#include "organizer_ui/panel_parts.h"
#include "organizer_ui/plan_tree_model.h"

namespace morvane {

namespace {

constexpr int rowHeight = 28;
constexpr int levelIndent = 16;
constexpr int leading = 10;  ///< before the chevron's slot
constexpr int chevronSlot = 14;
constexpr int chevronSize = 11;
constexpr int symbolSize = 16;
constexpr int gap = 8;
constexpr int trailing = 16;
constexpr int symbolLeft = leading + chevronSlot + gap - levelIndent;  ///< from the item's left edge
constexpr int chevronReach = 24;                                       ///< width that a click on it may hit

struct Cell {
    QRect symbol;
    QRect title;
    QRect detail;
    QString titleText;
    QString detailText;
    bool isFolder = false;
};

Cell layOut(const QRect& rect, const QModelIndex& index) {
    Cell cell;
    cell.titleText = index.data(Qt::DisplayRole).toString();
    cell.detailText = index.data(PlanTreeModel::DetailRole).toString();
    cell.isFolder = index.data(PlanTreeModel::FolderRole).toBool();
    const int detailWidth = QFontMetrics(MRVTheme::font(11)).horizontalAdvance(cell.detailText);
    cell.symbol = QRect(rect.left() + symbolLeft, rect.top() + (rect.height() - symbolSize) / 2, symbolSize,
                        symbolSize);
    cell.detail = QRect(rect.right() + 1 - trailing - detailWidth, rect.top(), detailWidth, rect.height());
    const int titleLeft = cell.symbol.right() + 1 + gap;
    cell.title =
        QRect(titleLeft, rect.top(), qMax(0, cell.detail.left() - trailing - titleLeft), rect.height());
    return cell;
}

QString elidedTitle(const Cell& cell) {
    return QFontMetrics(MRVTheme::font(12))
        .elidedText(cell.titleText, cell.isFolder ? Qt::ElideRight : Qt::ElideMiddle, cell.title.width());
}

}  // namespace

void ProjectOutlineCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    const Cell cell = layOut(option.rect, index);
    const bool empty = index.data(PlanTreeModel::EmptyFolderRole).toBool();
    const QColor& symbolColor = empty           ? MRVTheme::disabledText()
                                : cell.isFolder ? MRVTheme::accent()
                                                : MRVTheme::muted();
    painter->save();
    paintSymbol(*painter, cell.symbol, index.data(PlanTreeModel::SymbolRole).toString(), symbolColor);
    painter->setFont(MRVTheme::font(12));
    painter->setPen(empty ? MRVTheme::muted() : MRVTheme::ink());
    painter->drawText(cell.title, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, elidedTitle(cell));
    painter->setFont(MRVTheme::font(11));
    painter->setPen(MRVTheme::muted());
    painter->drawText(cell.detail, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, cell.detailText);
    painter->restore();
}

QSize ProjectOutlineCell::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {200, rowHeight};
}

bool ProjectOutlineCell::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                   const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const Cell cell = layOut(option.rect, index);
    QStringList lines;
    if (elidedTitle(cell) != cell.titleText)
        lines << cell.titleText;
    const QString source = index.data(Qt::AccessibleDescriptionRole).toString();
    if (!source.isEmpty())
        lines << source;
    QToolTip::showText(event->globalPos(), plainToolTip(lines.join(QLatin1Char('\n'))), view);
    return true;
}

PlanTreeView::PlanTreeView(QWidget* parent) : QTreeView(parent) {
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setIndentation(levelIndent);
    setAnimated(false);
    setFrameShape(QFrame::NoFrame);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setMouseTracking(true);
    setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    setItemDelegate(new ProjectOutlineCell(this));
}

void PlanTreeView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
    MRVRowView::States states = MRVRowView::Plain;
    if (selectionModel()->isSelected(index))
        states |= MRVRowView::Selected;
    if (hovered_ == index)
        states |= MRVRowView::Hovered;
    if (focusRingShown(this))
        states |= MRVRowView::Focused;
    if (currentIndex() == index)
        states |= MRVRowView::Current;
    MRVRowView::drawSelection(*painter,
                              QRect(0, option.rect.top(), viewport()->width(), option.rect.height()), states);
    drawBranches(painter, QRect(0, option.rect.top(), visualRect(index).left(), option.rect.height()), index);
    QStyleOptionViewItem cell = option;
    cell.rect = visualRect(index);
    itemDelegate()->paint(painter, cell, index);
}

void PlanTreeView::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const {
    if (!model()->hasChildren(index))
        return;
    const int left = rect.right() + 1 - levelIndent + leading + (chevronSlot - chevronSize) / 2;
    const QRectF chevron(left, rect.top() + (rect.height() - chevronSize) / 2.0, chevronSize, chevronSize);
    paintSymbol(*painter, chevron,
                isExpanded(index) ? QStringLiteral("chevron.down") : QStringLiteral("chevron.right"),
                MRVTheme::faint());
}

void PlanTreeView::mousePressEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && index.isValid() && model()->hasChildren(index)) {
        const int center = visualRect(index).left() - levelIndent + leading + chevronSlot / 2;
        if (qAbs(event->position().x() - center) <= chevronReach / 2.0) {
            setExpanded(index, !isExpanded(index));
            return;
        }
    }
    QTreeView::mousePressEvent(event);
}

bool PlanTreeView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::MouseMove)
        setHovered(indexAt(static_cast<QMouseEvent*>(event)->position().toPoint()));
    else if (event->type() == QEvent::Leave || event->type() == QEvent::Wheel)
        setHovered({});
    return QTreeView::viewportEvent(event);
}

void PlanTreeView::setHovered(const QModelIndex& index) {
    if (hovered_ == index)
        return;
    viewport()->update(rowRect(hovered_));
    hovered_ = index;
    viewport()->update(rowRect(hovered_));
}

QRect PlanTreeView::rowRect(const QModelIndex& index) const {
    if (!index.isValid())
        return {};
    const QRect cell = visualRect(index);
    return {0, cell.top(), viewport()->width(), cell.height()};
}

}  // namespace morvane
