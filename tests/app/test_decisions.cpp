// The library's small decisions, as tables.
#include "app/decisions.h"

#include <gtest/gtest.h>

#include "catalog/settings.h"

namespace morvane {
namespace {

using Paths = std::vector<std::string>;

std::vector<FileRef> files(const Paths& paths) {
    std::vector<FileRef> refs;
    for (const std::string& path : paths)
        refs.push_back({path, "/root"});
    return refs;
}

TEST(ToggleFavorites, AMixedSelectionBecomesAllFavourites) {
    std::unordered_set<std::string> favorites{"/a", "/other"};
    EXPECT_TRUE(toggleFavorites(favorites, files({"/a", "/b"})));
    EXPECT_EQ(favorites, (std::unordered_set<std::string>{"/a", "/b", "/other"}));
    EXPECT_TRUE(toggleFavorites(favorites, files({"/a", "/b"})));
    EXPECT_EQ(favorites, (std::unordered_set<std::string>{"/other"}));
}

TEST(ToggleFavorites, NothingSelectedChangesNothing) {
    std::unordered_set<std::string> favorites{"/a"};
    EXPECT_FALSE(toggleFavorites(favorites, {}));
    EXPECT_EQ(favorites, (std::unordered_set<std::string>{"/a"}));
}

TEST(AppendRoots, KeepsTheOrderAndComparesByExactText) {
    Paths roots{"/media/a", "/media/b/"};
    appendRoots(roots, {"/media/c", "/media/a", "/media/b", "/media/c"});
    EXPECT_EQ(roots, (Paths{"/media/a", "/media/b/", "/media/c", "/media/b"}));
}

TEST(RemoveRoot, TakesOnlyTheExactText) {
    Paths roots{"/a", "/a/", "/b"};
    removeRoot(roots, "/a");
    EXPECT_EQ(roots, (Paths{"/a/", "/b"}));
    removeRoot(roots, "/c");
    EXPECT_EQ(roots, (Paths{"/a/", "/b"}));
}

TEST(RememberPaths, TheLastOneUsedIsTheNewest) {
    Paths recent{"/old", "/b"};
    rememberPaths(recent, {"/a", "/b"});
    EXPECT_EQ(recent, (Paths{"/b", "/a", "/old"}));
}

TEST(RememberPaths, NeverHoldsMoreThanTheLimit) {
    Paths recent;
    for (int number = 0; number < 151; ++number)
        rememberPaths(recent, {"/" + std::to_string(number)});
    ASSERT_EQ(recent.size(), recentLimit);
    EXPECT_EQ(recent.front(), "/150");
    EXPECT_EQ(recent.back(), "/1");
}

}  // namespace
}  // namespace morvane
