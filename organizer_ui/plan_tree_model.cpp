#include "organizer_ui/plan_tree_model.h"

#include <utility>

namespace morvane {

PlanTreeModel::PlanTreeModel(QObject* parent)
    : QAbstractItemModel(parent),
      tree_(std::make_shared<const PlanTree>(PlanTree{buildPlanTree(PreviewRequest()), nullptr})) {}

PlanTreeModel::~PlanTreeModel() = default;

std::shared_ptr<const PlanTree> PlanTreeModel::setTree(std::shared_ptr<const PlanTree> tree) {
    beginResetModel();
    tree_.swap(tree);
    endResetModel();
    return tree;
}

QModelIndex PlanTreeModel::index(int row, int column, const QModelIndex& parent) const {
    const auto& children = node(parent).children;
    if (column != 0 || row < 0 || static_cast<std::size_t>(row) >= children.size())
        return {};
    return createIndex(row, 0, children[static_cast<std::size_t>(row)].get());
}

QModelIndex PlanTreeModel::parent(const QModelIndex& child) const {
    if (!child.isValid())
        return {};
    ProjectOutlineNode* above = node(child).parent;
    if (!above || above == tree_->root.get())
        return {};
    return createIndex(static_cast<int>(above->row), 0, above);
}

int PlanTreeModel::rowCount(const QModelIndex& parent) const {
    return static_cast<int>(node(parent).children.size());
}

int PlanTreeModel::columnCount(const QModelIndex&) const {
    return 1;
}

bool PlanTreeModel::hasChildren(const QModelIndex& parent) const {
    return !node(parent).children.empty();
}

QVariant PlanTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const ProjectOutlineNode& at = node(index);
    switch (role) {
        case Qt::DisplayRole:
            return QString::fromStdString(at.title);
        case SymbolRole:
            return QString::fromStdString(at.symbol);
        case DetailRole:
            return QString::fromStdString(at.detail);
        case FolderRole:
            return at.isFolder;
        case EmptyFolderRole:
            return at.isFolder && at.children.empty();
        case Qt::AccessibleTextRole:
            return QString::fromStdString(at.detail.empty() ? at.title : at.title + "，" + at.detail);
        case Qt::AccessibleDescriptionRole: {
            const QString source = sourcePath(at);
            return source.isEmpty() ? QVariant() : QStringLiteral("来源 %1").arg(source);
        }
        default:
            return {};
    }
}

const ProjectOutlineNode& PlanTreeModel::node(const QModelIndex& index) const {
    if (!index.isValid())
        return *tree_->root;
    return *static_cast<const ProjectOutlineNode*>(index.constInternalPointer());
}

QString PlanTreeModel::sourcePath(const ProjectOutlineNode& node) const {
    if (!tree_->plan || node.item >= tree_->plan->items.size())
        return {};
    return QString::fromStdString(tree_->plan->items[node.item].sourceURL.path);
}

}  // namespace morvane
