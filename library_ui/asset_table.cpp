#include "library_ui/asset_table.h"

#include "library_ui/asset_delegate.h"
#include "library_ui/asset_table_model.h"
#include "library_ui/overlay_scroll_bar.h"

#include "app/theme/paint.h"
#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>

namespace morvane {

AssetTable::AssetTable(AssetTableModel& model, QWidget* parent) : FileTable(parent), model_(model) {
    setModel(&model);
    setItemDelegate(new AssetDelegate(this));
    setAccessibleName(QStringLiteral("素材文件列表"));
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragOnly);
    setDefaultDropAction(Qt::CopyAction);
    new OverlayScrollBar(this);
    setUpColumns();
}

void AssetTable::setUpColumns() {
    TableHeader* header = tableHeader();
    constexpr int edge = AssetDelegate::columnSpacing / 2;
    header->setTextInset(AssetTableModel::NameColumn, AssetDelegate::nameTextInset, edge);
    header->setTextInset(AssetTableModel::FolderColumn, edge, edge);
    header->setTextInset(AssetTableModel::SizeColumn, edge, AssetDelegate::sizeTextInset);
    header->setStretchLastSection(true);
    header->setSectionsMovable(false);
    header->setMinimumSectionSize(column::leastSize + column::spacing);
    connect(header, &QHeaderView::sectionResized, this,
            [this](int section, int, int width) { sectionMoved(section, width); });
    fit();
}

std::vector<RowRange> AssetTable::selectedRanges() const {
    std::vector<RowRange> ranges;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        ranges.push_back({range.top(), range.bottom()});
    std::sort(ranges.begin(), ranges.end(),
              [](const RowRange& a, const RowRange& b) { return a.first < b.first; });
    std::vector<RowRange> apart;
    for (const RowRange& range : ranges) {
        if (!apart.empty() && range.first <= apart.back().last + 1)
            apart.back().last = std::max(apart.back().last, range.last);
        else
            apart.push_back(range);
    }
    return apart;
}

int AssetTable::leadingRow() const {
    const QModelIndex current = currentIndex();
    if (current.isValid() && selectionModel()->isSelected(current))
        return current.row();
    const auto ranges = selectedRanges();
    return ranges.empty() ? -1 : ranges.front().first;
}

void AssetTable::setWanted(const LibraryLayout& layout) {
    wanted_ = layout;
    fit();
}

void AssetTable::fit() {
    const QScopedValueRollback<bool> programmatic(fitting_, true);
    const ColumnWidths widths = fitColumns(viewport()->width(), wanted_);
    tableHeader()->resizeSection(AssetTableModel::NameColumn, widths.name + column::spacing);
    tableHeader()->resizeSection(AssetTableModel::FolderColumn, widths.folder + column::spacing);
    tableHeader()->resizeSection(AssetTableModel::SizeColumn, widths.size + column::spacing);
}

void AssetTable::sectionMoved(int section, int width) {
    if (fitting_)
        return;
    if (section == AssetTableModel::NameColumn)
        wanted_.nameWidth = std::max(width - column::spacing, column::leastName);
    else if (section == AssetTableModel::FolderColumn)
        wanted_.folderWidth = std::max(width - column::spacing, column::leastFolder);
    else
        return;
    fit();
    Q_EMIT wantedChanged();
}

void AssetTable::resizeEvent(QResizeEvent* event) {
    FileTable::resizeEvent(event);
    fit();
}

void AssetTable::keyboardSearch(const QString& search) {
    const bool goesOn =
        sinceTyped_.isValid() && sinceTyped_.elapsed() < QApplication::keyboardInputInterval();
    typed_ = goesOn ? typed_ + search : search;
    sinceTyped_.start();
    const int current = std::max(currentIndex().row(), 0);
    // A new word begins after the current row, a longer one may still be fulfilled by it.
    const int row = model_.rowBeginningWith(typed_, goesOn ? current : current + 1);
    if (row >= 0)
        setCurrentIndex(model_.index(row, AssetTableModel::NameColumn));
}

void AssetTable::startDrag(Qt::DropActions /*actions*/) {
    if (!selectionModel()->hasSelection())
        return;
    dragWaits_ = true;
    Q_EMIT dragBegun();
}

QModelIndex AssetTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const int rows = model_.rowCount();
    switch (action) {
        case MoveHome:
            return model_.index(0, AssetTableModel::NameColumn);
        case MoveEnd:
            return model_.index(rows - 1, AssetTableModel::NameColumn);
        case MoveLeft:
        case MoveRight:
            return currentIndex();
        default:
            return FileTable::moveCursor(action, modifiers);
    }
}

void AssetTable::mouseMoveEvent(QMouseEvent* event) {
    // A drag that is about to begin must not turn into a selection of rows.
    if (!dragWaits_)
        FileTable::mouseMoveEvent(event);
}

void AssetTable::mousePressEvent(QMouseEvent* event) {
    dragWaits_ = false;
    // A right click leaves the selection as it is: its menu tells the clicked row from the selected ones.
    if (event->button() == Qt::RightButton)
        event->accept();
    else
        FileTable::mousePressEvent(event);
}

void AssetTable::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton)
        event->accept();
    else
        FileTable::mouseDoubleClickEvent(event);
}

void AssetTable::contextMenuEvent(QContextMenuEvent* event) {
    event->accept();
    if (event->reason() != QContextMenuEvent::Keyboard) {
        Q_EMIT menuWanted(event->globalPos(), rowAt(event->pos().y()));
        return;
    }
    const QRect current = visualRect(currentIndex());
    Q_EMIT menuWanted(viewport()->mapToGlobal(current.isValid() ? current.center() : QPoint()), -1);
}

QPixmap dragPicture(const QString& name, const QString& symbol, std::size_t count, qreal ratio) {
    constexpr int widest = 240;
    constexpr int height = 32;
    const QFont font = MRVTheme::font(12);
    const QFontMetrics metrics(font);
    const QString text = count > 1 ? QStringLiteral("%1 个文件").arg(count)
                                   : metrics.elidedText(name, Qt::ElideMiddle, widest - 48);
    const int width = 36 + metrics.horizontalAdvance(text) + 12;
    QPixmap picture((QSizeF(width, height) * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBox(painter, QRectF(0, 0, width, height),
             {.radius = 8, .fill = MRVTheme::accentSoft(), .border = MRVTheme::accentLine()});
    paintSymbol(painter, QRectF(12, 8, 16, 16), count > 1 ? QStringLiteral("doc.on.doc") : symbol,
                MRVTheme::accent());
    painter.setFont(font);
    painter.setPen(MRVTheme::ink());
    painter.drawText(QRectF(36, 0, width - 36, height), Qt::AlignLeft | Qt::AlignVCenter, text);
    return picture;
}

}  // namespace morvane
