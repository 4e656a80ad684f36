#include "catalog/category.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/catalog/catalog_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;

// The tree as lines: two spaces a level, title, key, count.
void describe(const Category& category, std::size_t level, std::vector<std::string>& lines) {
    lines.push_back(std::string(level * 2, ' ') + category.title + " " + category.key + " " +
                    std::to_string(category.count));
    for (const auto& child : category.children)
        describe(*child, level + 1, lines);
}

std::vector<std::string> linesOf(const CategoryList& tree) {
    std::vector<std::string> lines;
    for (const auto& category : tree)
        describe(*category, 0, lines);
    return lines;
}

CategoryRequest requestFor(const SharedAssets& assets, std::vector<std::string> roots) {
    CategoryRequest request;
    request.assets = assets;
    request.roots = std::move(roots);
    return request;
}

TEST(Categories, WithoutLibraryFoldersAreTheThreeFixedEntries) {
    CategoryRequest request = requestFor(listOf({assetBelow("/r", "1.mov"), assetBelow("/r", "2.mov")}), {});
    request.favorites = {"/r/1.mov", "/gone.mov"};
    request.recentCount = 7;
    EXPECT_THAT(linesOf(buildCategories(request)),
                ElementsAre("全部素材 all 2", "我的收藏 favorites 1", "最近使用 recent 7"));
}

TEST(Categories, CountIncludesDeeperFolders) {
    const SharedAssets assets = listOf({assetBelow("/R", "a/x/1.mov"), assetBelow("/R", "a/y/z/2.mov")});
    EXPECT_THAT(linesOf(buildCategories(requestFor(assets, {"/R"}))),
                ElementsAre("全部素材 all 2", "我的收藏 favorites 0", "最近使用 recent 0", "R /R 2",
                            "  a /R/a 2", "    x /R/a/x 1", "    y /R/a/y 1", "      z /R/a/y/z 1"));
}

TEST(Categories, FilesDirectlyInALibraryFolderAddNoEntry) {
    const CategoryList tree = buildCategories(requestFor(listOf({assetBelow("/R", "1.mov")}), {"/R"}));
    ASSERT_EQ(tree.size(), 4U);
    EXPECT_EQ(tree[3]->count, 1);
    EXPECT_TRUE(tree[3]->children.empty());
}

TEST(Categories, LibraryFoldersKeepTheirOrderSubFoldersAreSorted) {
    const SharedAssets assets = listOf({assetBelow("/m/Z", "Day 10/1.mov"), assetBelow("/m/Z", "day 2/1.mov"),
                                        assetBelow("/m/A", "1.mov"), assetBelow("/m/Z", "Day 2/1.mov"),
                                        assetBelow("/m/not listed", "x/1.mov")});
    EXPECT_THAT(linesOf(buildCategories(requestFor(assets, {"/m/Z", "/m/A", "/m/empty"}))),
                ElementsAre("全部素材 all 5", "我的收藏 favorites 0", "最近使用 recent 0", "Z /m/Z 3",
                            "  day 2 /m/Z/day 2 1", "  Day 2 /m/Z/Day 2 1", "  Day 10 /m/Z/Day 10 1",
                            "A /m/A 1", "empty /m/empty 0"));
}

TEST(Categories, KeysFollowTheStoredFolderText) {
    const SharedAssets assets =
        listOf({{"/m/abc/1.mov", "/m/", "bc/1.mov", 1, 1}, {"/m//d//2.mov", "/m/", "d//e/2.mov", 1, 1}});
    const CategoryList tree = buildCategories(requestFor(assets, {"/m/"}));
    EXPECT_THAT(linesOf({tree[3]}),
                ElementsAre("m /m/ 2", "  bc /m//bc 1", "  d /m//d 1", "    e /m//d/e 1"));
}

TEST(Categories, EmptyPiecesCountInOneFolder) {
    const SharedAssets assets =
        listOf({{"/m/1.mov", "/m", "a//b/1.mov", 1, 1}, {"/m/2.mov", "/m", "a/b/2.mov", 1, 1}});
    EXPECT_THAT(linesOf({buildCategories(requestFor(assets, {"/m"}))[3]}),
                ElementsAre("m /m 2", "  a /m/a 2", "    b /m/a/b 2"));
}

TEST(CategoryTree, DeliversTheNewestRebuildOnly) {
    CategoryTree tree;
    std::vector<std::int64_t> delivered;
    QObject::connect(&tree, &CategoryTree::rebuilt,
                     [&] { delivered.push_back(tree.categories()[0]->count); });
    EXPECT_TRUE(tree.categories().empty());
    tree.rebuild(requestFor(listOf({assetBelow("/r", "1.mov")}), {}));
    tree.rebuild(requestFor(listOf({assetBelow("/r", "1.mov"), assetBelow("/r", "2.mov")}), {}));
    EXPECT_EQ(tree.categoryGeneration(), 2);
    ASSERT_TRUE(waitUntil([&] { return !delivered.empty(); }));
    EXPECT_THAT(delivered, ElementsAre(2));
}

TEST(CategoryTree, TheCountOfRecentChangesInPlace) {
    CategoryTree tree;
    std::vector<int> rows;
    bool rebuilt = false;
    QObject::connect(&tree, &CategoryTree::countChanged, [&](int row) { rows.push_back(row); });
    QObject::connect(&tree, &CategoryTree::rebuilt, [&] { rebuilt = true; });
    tree.setRecentCount(3);
    EXPECT_TRUE(rows.empty()) << "there is no row yet";
    tree.rebuild(requestFor(listOf({}), {"/r"}));
    tree.setRecentCount(4);  // newer than what the rebuild captured
    ASSERT_TRUE(waitUntil([&] { return rebuilt; }));
    EXPECT_EQ(tree.categories()[2]->count, 4);
    const auto held = tree.categories()[2];
    tree.setRecentCount(5);
    EXPECT_THAT(rows, ElementsAre(2));
    EXPECT_EQ(held->count, 5) << "the same entry";
    EXPECT_EQ(tree.categories().size(), 4U);
}

TEST(CategoryTree, GoesWithWorkOnItsWay) {
    AssetList::Builder builder;
    for (int number = 0; number < 20000; ++number) {
        const std::string relative = std::to_string(number % 100) + "/" + std::to_string(number) + ".mov";
        builder.add("/r/" + relative, "/r", relative, 1, 1);
    }
    const SharedAssets assets = builder.finish();
    auto tree = std::make_unique<CategoryTree>();
    for (int pass = 0; pass < 5; ++pass)
        tree->rebuild(requestFor(assets, {"/r"}));
    tree.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(assets.use_count(), 1) << "nothing keeps the list";
}

}  // namespace
}  // namespace morvane
