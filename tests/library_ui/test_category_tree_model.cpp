#include "library_ui/category_tree_model.h"

#include "tests/library_ui/library_fixture.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace morvane::test {
namespace {

TEST(CategoryTreeModel, FollowsTheTree) {
    CategoryTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setCategories(sampleCategories());
    ASSERT_EQ(model.rowCount(), 6);
    const QModelIndex root = model.index(3, 0);
    ASSERT_EQ(model.rowCount(root), 4);
    const QModelIndex trip = model.index(1, 0, root);
    ASSERT_EQ(model.rowCount(trip), 6);
    const QModelIndex sound = model.index(5, 0, trip);
    EXPECT_EQ(sound.data().toString(), "同期声");
    EXPECT_EQ(sound.data(CategoryTreeModel::CountTextRole).toString(), "148");
    EXPECT_EQ(sound.parent(), trip);
    EXPECT_EQ(trip.parent(), root);
    EXPECT_FALSE(root.parent().isValid());
    EXPECT_EQ(model.rowCount(sound), 0);
    EXPECT_FALSE(model.index(6, 0, trip).isValid());
    EXPECT_FALSE(model.index(0, 1).isValid());
}

TEST(CategoryTreeModel, CountsAreGroupedAndKeysAreToolTips) {
    CategoryTreeModel model;
    model.setCategories(sampleCategories());
    EXPECT_EQ(model.index(0, 0).data(CategoryTreeModel::CountTextRole).toString(), "12,486");
    EXPECT_EQ(model.index(0, 0).data(Qt::ToolTipRole).toString(), "all");
    EXPECT_EQ(model.index(3, 0).data(Qt::ToolTipRole).toString(), "/run/media/lin/影像素材A");
    EXPECT_EQ(model.index(0, 0).data(Qt::AccessibleTextRole).toString(), "全部素材，12,486");
}

TEST(CategoryTreeModel, ALineStandsBeforeTheFirstLibraryFolder) {
    CategoryTreeModel model;
    CategoryList tree = sampleCategories();
    model.setCategories(tree);
    std::vector<bool> lines;
    for (int row = 0; row < model.rowCount(); ++row)
        lines.push_back(model.index(row, 0).data(CategoryTreeModel::LineBelowRole).toBool());
    EXPECT_EQ(lines, (std::vector<bool>{false, false, true, false, false, false}));
    tree.resize(3);
    model.setCategories(tree);
    EXPECT_FALSE(model.index(2, 0).data(CategoryTreeModel::LineBelowRole).toBool());
}

TEST(CategoryTreeModel, ACountChangesInPlace) {
    CategoryTreeModel model;
    const CategoryList tree = sampleCategories();
    model.setCategories(tree);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    tree[2]->count = 151;
    model.countChanged(2);
    ASSERT_EQ(changes.count(), 1);
    EXPECT_EQ(changes[0][0].toModelIndex().row(), 2);
    EXPECT_EQ(model.index(2, 0).data(CategoryTreeModel::CountTextRole).toString(), "151");
    model.countChanged(99);
    EXPECT_EQ(changes.count(), 1);
}

TEST(CategoryTreeModel, TwentyThousandFoldersStayWalkable) {
    CategoryList tree = sampleCategories();
    for (int i = 0; i < 200; ++i) {
        auto day = std::make_shared<Category>(
            Category{.title = "Day " + std::to_string(i), .key = {}, .count = 1, .children = {}});
        for (int j = 0; j < 100; ++j)
            day->children.push_back(std::make_shared<Category>(
                Category{.title = std::to_string(j), .key = {}, .count = 1, .children = {}}));
        tree[3]->children.push_back(day);
    }
    CategoryTreeModel model;
    model.setCategories(tree);
    const QModelIndex root = model.index(3, 0);
    ASSERT_EQ(model.rowCount(root), 204);
    for (int row = 4; row < 204; ++row) {
        const QModelIndex day = model.index(row, 0, root);
        ASSERT_EQ(model.rowCount(day), 100);
        ASSERT_EQ(model.index(99, 0, day).parent(), day);
        ASSERT_EQ(model.index(99, 0, day).data().toString(), "99");
    }
}

}  // namespace
}  // namespace morvane::test
