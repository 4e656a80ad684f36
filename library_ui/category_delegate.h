// Paints the content of a category row: title and count. Background and chevron are the tree view's.
#pragma once

#include <QStyledItemDelegate>

namespace morvane {

class CategoryDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit CategoryDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    static constexpr int rowHeight = 32;
    static constexpr int rowSpacing = 3;
};

}  // namespace morvane
