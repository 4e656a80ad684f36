// Paints the cells of the asset list. Background, selection and focus ring of a row are the table's.
#pragma once

#include <QStyledItemDelegate>

namespace morvane {

/// Name cell: symbol 20, 6 from the cell's edge; 10 apart title and subtitle. Other cells: one line.
class AssetDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit AssetDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    static constexpr int rowHeight = 48;
    /// Room between two cells; half of it on each side.
    static constexpr int columnSpacing = 8;
    /// Where the text of the name column begins, from the section's left edge.
    static constexpr int nameTextInset = columnSpacing / 2 + 6 + 20 + 10;
    /// Right inset of the size column's text from the section's right edge.
    static constexpr int sizeTextInset = columnSpacing / 2 + 14;

private:
    void paintName(QPainter& painter, const QRect& cell, const QModelIndex& index) const;
};

}  // namespace morvane
