#include "library_ui/category_tree_model.h"

#include "library_ui/asset_text.h"

#include "app/theme/plain_tool_tip.h"
#include "support/format_text.h"

#include <QByteArray>

namespace morvane {

CategoryTreeModel::CategoryTreeModel(QObject* parent) : QAbstractItemModel(parent) {}

void CategoryTreeModel::setCategories(const CategoryList& categories) {
    beginResetModel();
    categories_ = categories;
    nodes_.clear();
    append(categories_, -1);
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        nodes_[i].firstChild = static_cast<int>(nodes_.size());
        append(nodes_[i].category->children, static_cast<int>(i));
    }
    endResetModel();
}

void CategoryTreeModel::append(const CategoryList& children, int parent) {
    int row = 0;
    for (const auto& child : children)
        nodes_.push_back({.category = child.get(), .parent = parent, .row = row++});
}

void CategoryTreeModel::countChanged(int row) {
    const QModelIndex changed = index(row, 0);
    if (changed.isValid())
        Q_EMIT dataChanged(changed, changed, {CountRole, CountTextRole, Qt::AccessibleTextRole});
}

const Category& CategoryTreeModel::categoryAt(const QModelIndex& index) const {
    return *nodes_[index.internalId()].category;
}

QModelIndex CategoryTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column != 0 || row >= rowCount(parent))
        return {};
    const int first = parent.isValid() ? nodes_[parent.internalId()].firstChild : 0;
    return createIndex(row, 0, static_cast<quintptr>(first) + static_cast<quintptr>(row));
}

QModelIndex CategoryTreeModel::parent(const QModelIndex& index) const {
    if (!index.isValid())
        return {};
    const int parent = nodes_[index.internalId()].parent;
    return parent < 0
               ? QModelIndex()
               : createIndex(nodes_[static_cast<std::size_t>(parent)].row, 0, static_cast<quintptr>(parent));
}

int CategoryTreeModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid())
        return static_cast<int>(categories_.size());
    return parent.column() == 0 ? static_cast<int>(categoryAt(parent).children.size()) : 0;
}

int CategoryTreeModel::columnCount(const QModelIndex& /*parent*/) const {
    return 1;
}

QVariant CategoryTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const Category& category = categoryAt(index);
    switch (role) {
        case Qt::DisplayRole:
            return shownText(category.title);
        case Qt::ToolTipRole:
            return plainToolTip(shownText(category.key));
        case Qt::AccessibleTextRole:
            return QStringLiteral("%1，%2").arg(shownText(category.title),
                                                shownText(formatCount(category.count)));
        case KeyRole:
            return QByteArray::fromStdString(category.key);
        case CountRole:
            return static_cast<qint64>(category.count);
        case CountTextRole:
            return shownText(formatCount(category.count));
        case LineBelowRole:
            return !index.parent().isValid() && index.row() == fixedEntries - 1 && rowCount() > fixedEntries;
        default:
            return {};
    }
}

Qt::ItemFlags CategoryTreeModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

}  // namespace morvane
