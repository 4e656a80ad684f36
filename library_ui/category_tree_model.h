// The category tree as a model over one built tree.
#pragma once

#include "catalog/category.h"

#include <QAbstractItemModel>

#include <string>
#include <vector>

namespace morvane {

/// One column. The entries are laid out breadth first once per tree, so that every question is a look-up.
class CategoryTreeModel final : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Role {
        KeyRole = Qt::UserRole,  ///< QByteArray, the exact bytes
        CountRole,               ///< qint64
        CountTextRole,           ///< grouped
        LineBelowRole  ///< a line stands below this entry: it is the last before the library folders
    };

    explicit CategoryTreeModel(QObject* parent = nullptr);

    /// Replaces the tree.
    void setCategories(const CategoryList& categories);
    /// Tells the views that the count of the top-level entry at `row` changed in place.
    void countChanged(int row);
    /// The entry of a valid index.
    const Category& categoryAt(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    /// "all", "favorites" and "recent" come first.
    static constexpr int fixedEntries = 3;
    struct Node {
        const Category* category = nullptr;
        int parent = -1;
        int row = 0;
        int firstChild = 0;
    };
    void append(const CategoryList& children, int parent);

    CategoryList categories_;
    std::vector<Node> nodes_;
};

}  // namespace morvane
