#include "library_ui/asset_delegate.h"

#include "library_ui/asset_table_model.h"

#include "app/theme/symbols.h"
#include "app/theme/theme.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int symbolSize = 20;
constexpr int symbolInset = 6;
constexpr int titleLine = 17;
constexpr int subtitleLine = 14;
constexpr int lineGap = 3;
constexpr int nameTrailing = 4;

void paintElided(QPainter& painter, const QRect& rect, const QFont& font, const QColor& color,
                 const QString& text, Qt::Alignment alignment) {
    painter.setFont(font);
    painter.setPen(color);
    const QString shown = QFontMetrics(font).elidedText(text, Qt::ElideMiddle, rect.width());
    painter.drawText(rect, static_cast<int>(alignment | Qt::AlignVCenter) | Qt::TextSingleLine, shown);
}

}  // namespace

AssetDelegate::AssetDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QSize AssetDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const {
    return {option.rect.width(), rowHeight};
}

void AssetDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const {
    const QRect cell = option.rect.adjusted(columnSpacing / 2, 0, -columnSpacing / 2, 0);
    painter->save();
    if (index.column() == AssetTableModel::NameColumn) {
        paintName(*painter, cell, index);
    } else {
        static const QFont font = MRVTheme::font(11);
        const bool size = index.column() == AssetTableModel::SizeColumn;
        const QRect text = size ? cell.adjusted(0, 0, columnSpacing / 2 - sizeTextInset, 0) : cell;
        paintElided(*painter, text, font, MRVTheme::muted(), index.data().toString(),
                    size ? Qt::AlignRight : Qt::AlignLeft);
    }
    painter->restore();
}

void AssetDelegate::paintName(QPainter& painter, const QRect& cell, const QModelIndex& index) const {
    static const QFont titleFont = MRVTheme::font(12);
    static const QFont subtitleFont = MRVTheme::font(10);
    const QRect symbol(cell.left() + symbolInset, cell.center().y() + 1 - symbolSize / 2, symbolSize,
                       symbolSize);
    const bool audio = index.data(AssetTableModel::AudioRole).toBool();
    paintSymbol(painter, symbol, index.data(AssetTableModel::SymbolRole).toString(),
                audio ? MRVTheme::accent() : MRVTheme::systemBlue());

    const int left = cell.left() + nameTextInset - columnSpacing / 2;
    const int width = cell.right() + 1 - nameTrailing - left;
    const int top = cell.top() + (cell.height() - titleLine - lineGap - subtitleLine) / 2;
    paintElided(painter, {left, top, width, titleLine}, titleFont, MRVTheme::ink(), index.data().toString(),
                Qt::AlignLeft);
    paintElided(painter, {left, top + titleLine + lineGap, width, subtitleLine}, subtitleFont,
                MRVTheme::muted(), index.data(AssetTableModel::SubtitleRole).toString(), Qt::AlignLeft);
}

}  // namespace morvane
