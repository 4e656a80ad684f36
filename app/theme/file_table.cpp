#include "app/theme/file_table.h"

#include "app/theme/focus_ring.h"
#include "app/theme/paint.h"
#include "app/theme/row_view.h"
#include "app/theme/theme.h"

#include <QHoverEvent>
#include <QKeyEvent>
#include <QPainter>

namespace morvane {

namespace {

constexpr int headerHeight = 28;
constexpr int listRowHeight = 48;

}  // namespace

TableHeader::TableHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
    setFont(MRVTheme::font(11));
    setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setHighlightSections(false);
    setSectionsClickable(false);
    setFixedHeight(headerHeight);
}

void TableHeader::setTextInset(int section, int left, int right) {
    const auto index = static_cast<std::size_t>(section);
    if (index >= insets_.size())
        insets_.resize(index + 1);
    insets_[index] = {left, right};
    viewport()->update();
}

QSize TableHeader::sizeHint() const {
    return {QHeaderView::sizeHint().width(), headerHeight};
}

void TableHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
    QStyleOptionHeader option;
    initStyleOption(&option);
    option.rect = rect;
    style()->drawControl(QStyle::CE_HeaderSection, &option, painter, this);

    const auto index = static_cast<std::size_t>(section);
    const Inset inset = index < insets_.size() ? insets_[index] : Inset{};
    const QVariant alignment = model()->headerData(section, Qt::Horizontal, Qt::TextAlignmentRole);
    option.rect = rect.adjusted(inset.left, 0, -inset.right, 0);
    option.text = model()->headerData(section, Qt::Horizontal).toString();
    option.textAlignment =
        alignment.isValid() ? Qt::Alignment::fromInt(alignment.toInt()) : defaultAlignment();
    option.section = section;
    style()->drawControl(QStyle::CE_HeaderLabel, &option, painter, this);
}

FileTable::FileTable(QWidget* parent) : QTableView(parent), header_(new TableHeader(this)) {
    setHorizontalHeader(header_);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(listRowHeight);
    verticalHeader()->setMinimumSectionSize(listRowHeight);
    setFrameShape(QFrame::NoFrame);
    setShowGrid(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_Hover);
}

void FileTable::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space) {
        QTableView::keyPressEvent(event);
        return;
    }
    event->accept();
    if (onSpace && !event->isAutoRepeat())
        onSpace();
}

void FileTable::updateRow(int row) {
    if (row < 0 || model() == nullptr)
        return;
    viewport()->update(0, rowViewportPosition(row), viewport()->width(), rowHeight(row));
}

void FileTable::setHovered(int row) {
    if (hovered_ == row)
        return;
    updateRow(hovered_);
    hovered_ = row;
    updateRow(hovered_);
}

bool FileTable::viewportEvent(QEvent* event) {
    switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
            setHovered(rowAt(static_cast<QHoverEvent*>(event)->position().toPoint().y()));
            break;
        case QEvent::HoverLeave:
        case QEvent::Leave:
            setHovered(-1);
            break;
        default:
            break;
    }
    return QTableView::viewportEvent(event);
}

void FileTable::paintRows() {
    const int rows = model() == nullptr ? 0 : model()->rowCount(rootIndex());
    const int first = rowAt(0);
    if (first < 0 || rows == 0)
        return;
    QPainter painter(viewport());
    const bool ring = focusRingShown(this);
    for (int row = first; row < rows; ++row) {
        const QRect rect(0, rowViewportPosition(row), viewport()->width(), rowHeight(row));
        if (rect.top() >= viewport()->height())
            break;
        MRVRowView::States states = MRVRowView::Plain;
        states.setFlag(MRVRowView::Selected, selectionModel()->isRowSelected(row, rootIndex()));
        states.setFlag(MRVRowView::Hovered, row == hovered_);
        states.setFlag(MRVRowView::Focused, ring);
        states.setFlag(MRVRowView::Current, row == currentIndex().row());
        MRVRowView::drawSelection(painter, rect, states);
    }
}

void FileTable::paintEvent(QPaintEvent* event) {
    paintRows();
    QTableView::paintEvent(event);
}

void FileTable::focusInEvent(QFocusEvent* event) {
    QTableView::focusInEvent(event);
    viewport()->update();
}

void FileTable::focusOutEvent(QFocusEvent* event) {
    QTableView::focusOutEvent(event);
    viewport()->update();
}

void FileTable::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    updateRow(previous.row());
    updateRow(current.row());
}

}  // namespace morvane
