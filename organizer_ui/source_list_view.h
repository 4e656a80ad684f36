// The list of sources: rows 44 high with symbol, name and the folder that holds the source.
#pragma once

#include <vector>

#include <QListView>
#include <QStyledItemDelegate>

namespace morvane {

class SourceCell : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

/// Several rows at once can be selected; Delete asks for their removal.
class SourceListView : public QListView {
    Q_OBJECT

public:
    explicit SourceListView(QWidget* parent = nullptr);

    /// Draws names in the secondary colour: the list can be read and scrolled, not changed.
    void setMuted(bool muted);
    bool isMuted() const { return muted_; }
    /// Numbers of the selected rows, in no order.
    std::vector<int> selectedRows() const;

Q_SIGNALS:
    void rowsSelected();
    void removalRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    bool muted_ = false;
};

}  // namespace morvane
