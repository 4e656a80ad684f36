#include "library_ui/category_delegate.h"

#include "library_ui/category_tree_model.h"

#include "app/theme/theme.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int titleInset = 3;
constexpr int countInset = 8;
constexpr int titleToCount = 6;

}  // namespace

CategoryDelegate::CategoryDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QSize CategoryDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const {
    return {option.rect.width(), rowHeight + rowSpacing};
}

void CategoryDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
    static const QFont titleFont = MRVTheme::font(12);
    static const QFont countFont = MRVTheme::font(10);
    painter->save();
    const QRect cell(option.rect.left(), option.rect.top(), option.rect.width(), rowHeight);
    const QString count = index.data(CategoryTreeModel::CountTextRole).toString();
    const int countWidth = QFontMetrics(countFont).horizontalAdvance(count);
    const QRect countRect(cell.right() + 1 - countInset - countWidth, cell.top(), countWidth, cell.height());
    painter->setFont(countFont);
    painter->setPen(MRVTheme::faint());
    painter->drawText(countRect, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, count);

    const int left = cell.left() + titleInset;
    const QRect titleRect(left, cell.top(), countRect.left() - titleToCount - left, cell.height());
    painter->setFont(titleFont);
    painter->setPen(MRVTheme::ink());
    painter->drawText(
        titleRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        QFontMetrics(titleFont).elidedText(index.data().toString(), Qt::ElideRight, titleRect.width()));
    painter->restore();
}

}  // namespace morvane
