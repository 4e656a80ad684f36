#include "organizer_ui/source_list_view.h"

#include <QKeyEvent>
#include <QPainter>

#include "app/theme/focus_ring.h"
#include "app/theme/row_view.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"
#include "organizer_ui/row_list.h"
#include "organizer_ui/source_list_model.h"

namespace morvane {

namespace {

constexpr int rowHeight = 44;
constexpr int symbolSize = 20;
constexpr int padding = 12;
constexpr int gap = 10;
constexpr int nameHeight = 17;
constexpr int pathHeight = 14;

MRVRowView::States rowStates(const QStyleOptionViewItem& option, const QModelIndex& index) {
    MRVRowView::States states = MRVRowView::Plain;
    const auto* view = qobject_cast<const SourceListView*>(option.widget);
    if (option.state.testFlag(QStyle::State_Selected))
        states |= MRVRowView::Selected;
    if (option.state.testFlag(QStyle::State_MouseOver) && !(view && view->isMuted()))
        states |= MRVRowView::Hovered;
    if (view && focusRingShown(view))
        states |= MRVRowView::Focused;
    if (view && view->currentIndex() == index)
        states |= MRVRowView::Current;
    return states;
}

}  // namespace

void SourceCell::paint(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
    const auto* view = qobject_cast<const SourceListView*>(option.widget);
    const bool muted = view && view->isMuted();
    const bool missing = index.data(SourceListModel::MissingRole).toBool();
    const QRect& row = option.rect;
    painter->save();
    MRVRowView::drawSelection(*painter, row, rowStates(option, index));
    const QRect symbol(row.left() + padding, row.top() + (rowHeight - symbolSize) / 2, symbolSize,
                       symbolSize);
    paintSymbol(*painter, symbol, index.data(SourceListModel::SymbolRole).toString(),
                missing ? MRVTheme::warning() : MRVTheme::muted());
    const int left = symbol.right() + 1 + gap;
    const int width = row.right() + 1 - padding - left;
    const QRect name(left, row.top() + (rowHeight - nameHeight - pathHeight) / 2, width, nameHeight);
    const QRect path(left, name.bottom() + 1, width, pathHeight);
    painter->setFont(MRVTheme::font(12));
    painter->setPen(muted ? MRVTheme::muted() : MRVTheme::ink());
    painter->drawText(name, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideMiddle, width));
    painter->setFont(MRVTheme::font(10));
    painter->setPen(MRVTheme::muted());
    painter->drawText(path, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      painter->fontMetrics().elidedText(index.data(SourceListModel::PathRole).toString(),
                                                        Qt::ElideMiddle, width));
    painter->restore();
}

QSize SourceCell::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {100, rowHeight};
}

SourceListView::SourceListView(QWidget* parent) : QListView(parent) {
    setUpRowList(*this);
    setSelectionMode(ExtendedSelection);
    viewport()->setAcceptDrops(false);  // the card around the list takes what is dropped
    setItemDelegate(new SourceCell(this));
}

void SourceListView::setMuted(bool muted) {
    muted_ = muted;
    viewport()->update();
}

std::vector<int> SourceListView::selectedRows() const {
    std::vector<int> rows;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    return rows;
}

void SourceListView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        Q_EMIT removalRequested();
        event->accept();
        return;
    }
    QListView::keyPressEvent(event);
}

void SourceListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QListView::selectionChanged(selected, deselected);
    Q_EMIT rowsSelected();
}

}  // namespace morvane
