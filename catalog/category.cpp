#include "catalog/category.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "support/deliver.h"
#include "support/natural_order.h"
#include "support/path_text.h"

namespace morvane {

namespace {

constexpr std::size_t recentRow = 2;  // of the top level

std::shared_ptr<Category> makeCategory(std::string title, std::string key, std::size_t count) {
    auto category = std::make_shared<Category>();
    category->title = std::move(title);
    category->key = std::move(key);
    category->count = static_cast<std::int64_t>(count);
    return category;
}

std::size_t favoriteCount(const CategoryRequest& request) {
    return static_cast<std::size_t>(
        std::count_if(request.favorites.begin(), request.favorites.end(),
                      [&](const std::string& path) { return request.assets->rowOf(path).has_value(); }));
}

void sortNode(Category& node) {
    std::vector<std::string_view> titles;
    titles.reserve(node.children.size());
    for (const auto& child : node.children)
        titles.emplace_back(child->title);
    std::vector<std::shared_ptr<Category>> sorted;
    sorted.reserve(node.children.size());
    for (const std::uint32_t index : naturalOrder(titles))
        sorted.push_back(node.children[index]);
    node.children = std::move(sorted);
    for (const auto& child : node.children)
        sortNode(*child);
}

// The assets of one library folder, counted by the folder part of `relative` in order of first
// appearance: a library has far fewer folders than files.
struct FolderCounts {
    std::size_t assets = 0;
    std::vector<std::pair<std::string_view, std::int64_t>> folders;
    std::unordered_map<std::string_view, std::size_t> places;

    void add(std::string_view folder) {
        ++assets;
        const auto [place, isNew] = places.try_emplace(folder, folders.size());
        if (isNew)
            folders.emplace_back(folder, 0);
        ++folders[place->second].second;
    }
};

std::vector<FolderCounts> countFolders(const AssetList& assets) {
    std::vector<FolderCounts> counts(assets.roots().size());
    for (std::size_t row = 0; row < assets.size(); ++row)
        counts[assets.rootOf(row)].add(assets.at(row).folder());
    return counts;
}

std::shared_ptr<Category> libraryFolder(const std::string& root, const FolderCounts& counts) {
    auto top = makeCategory(std::string(lastPathComponent(root)), root, counts.assets);
    std::unordered_map<std::string, Category*> made;
    for (const auto& [folder, count] : counts.folders) {
        Category* above = top.get();
        for (const std::string_view piece : pathPieces(folder)) {
            const std::string key = above->key + "/" + std::string(piece);
            Category*& node = made[key];
            if (node == nullptr) {
                above->children.push_back(makeCategory(std::string(piece), key, 0));
                node = above->children.back().get();
            }
            node->count += count;
            above = node;
        }
    }
    sortNode(*top);
    return top;
}

}  // namespace

CategoryList buildCategories(const CategoryRequest& request) {
    CategoryList tree = {makeCategory("全部素材", "all", request.assets->size()),
                         makeCategory("我的收藏", "favorites", favoriteCount(request)),
                         makeCategory("最近使用", "recent", request.recentCount)};
    const std::vector<FolderCounts> counts = countFolders(*request.assets);
    const std::vector<std::string>& indexed = request.assets->roots();
    for (const std::string& root : request.roots) {
        const auto found = std::find(indexed.begin(), indexed.end(), root);
        tree.push_back(libraryFolder(root, found == indexed.end()
                                               ? FolderCounts()
                                               : counts[static_cast<std::size_t>(found - indexed.begin())]));
    }
    return tree;
}

CategoryTree::CategoryTree(QObject* parent)
    : QObject(parent), categoryQueue_("com.morvane.library.categories", SerialQueue::Priority::Utility) {}

CategoryTree::~CategoryTree() = default;

void CategoryTree::rebuild(CategoryRequest request) {
    const std::int64_t generation = ++categoryGeneration_;
    recentCount_ = request.recentCount;
    runAndDeliver(
        categoryQueue_, this, [request = std::move(request)] { return buildCategories(request); },
        [generation](CategoryTree& tree, Outcome<CategoryList>& outcome) {
            if (generation == tree.categoryGeneration_)
                tree.deliver(std::move(outcome.get()));
        });
}

void CategoryTree::deliver(CategoryList tree) {
    categories_ = std::move(tree);
    categories_[recentRow]->count = static_cast<std::int64_t>(recentCount_);
    Q_EMIT rebuilt();
}

void CategoryTree::setRecentCount(std::size_t count) {
    recentCount_ = count;
    if (categories_.empty())
        return;
    categories_[recentRow]->count = static_cast<std::int64_t>(count);
    Q_EMIT countChanged(static_cast<int>(recentRow));
}

}  // namespace morvane
