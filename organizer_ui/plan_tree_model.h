// The plan tree as an item model: the root's children are the top-level rows.
#pragma once

#include <memory>

#include <QAbstractItemModel>

#include "organizer_ui/plan_tree.h"

namespace morvane {

/// Shows one whole tree at a time; texts are made for visible rows only. Main thread.
class PlanTreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Role {
        SymbolRole = Qt::UserRole,  ///< QString, symbol name
        DetailRole,                 ///< QString
        FolderRole,                 ///< bool
        EmptyFolderRole             ///< bool, a folder with nothing in it
    };

    explicit PlanTreeModel(QObject* parent = nullptr);
    ~PlanTreeModel() override;

    /// Swaps in another tree (never null); everything is closed. Returns the one before, so that its
    /// owner can let it go where freeing a large one keeps nobody waiting.
    std::shared_ptr<const PlanTree> setTree(std::shared_ptr<const PlanTree> tree);
    /// The node whose children are the top-level rows.
    const ProjectOutlineNode& previewRoot() const { return *tree_->root; }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    const ProjectOutlineNode& node(const QModelIndex& index) const;
    /// Path of the planned source; empty for folders.
    QString sourcePath(const ProjectOutlineNode& node) const;

    std::shared_ptr<const PlanTree> tree_;
};

}  // namespace morvane
