// The category tree: three fixed entries, then every library folder with its sub-folders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include <QObject>

#include "catalog/asset_list.h"
#include "support/serial_queue.h"

namespace morvane {

struct Category {
    std::string title;
    std::string key;  ///< "all", "favorites", "recent" or a folder path
    std::int64_t count = 0;
    std::vector<std::shared_ptr<Category>> children;  ///< ordered by title; none for the fixed entries
};

using CategoryList = std::vector<std::shared_ptr<Category>>;

/// What a rebuild captures.
struct CategoryRequest {
    SharedAssets assets;
    std::unordered_set<std::string> favorites;
    std::size_t recentCount = 0;
    std::vector<std::string> roots;
};

/// The top level of the tree. Counts of folders include everything below them. Any thread.
CategoryList buildCategories(const CategoryRequest& request);

/// Builds trees off the main thread and keeps the newest. Main thread only.
class CategoryTree : public QObject {
    Q_OBJECT
public:
    explicit CategoryTree(QObject* parent = nullptr);
    ~CategoryTree() override;

    const CategoryList& categories() const { return categories_; }
    std::int64_t categoryGeneration() const { return categoryGeneration_; }
    const SerialQueue& categoryQueue() const { return categoryQueue_; }

    /// Starts a rebuild; every earlier one that has not been delivered is void.
    void rebuild(CategoryRequest request);
    /// Changes the count of the entry "recent" in place.
    void setRecentCount(std::size_t count);

Q_SIGNALS:
    /// categories() is a new tree; entries of the old one stay alive for whoever still holds them.
    void rebuilt();
    /// The count of the top-level entry at `row` changed, nothing else.
    void countChanged(int row);

private:
    void deliver(CategoryList tree);

    std::int64_t categoryGeneration_ = 0;
    CategoryList categories_;
    std::size_t recentCount_ = 0;  ///< may be newer than what a rebuild on its way captured
    SerialQueue categoryQueue_;
};

}  // namespace morvane
