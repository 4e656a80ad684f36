#include "catalog/search_keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/catalog/catalog_fixture.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(SearchKey, IsNameRelativeAndFolderNameFolded) {
    EXPECT_EQ(searchKey("/Volumes/Média/Ｄay/Été 1.MOV", "Ｄay/Été 1.MOV", "/Volumes/Média"),
              "ete 1.mov day/ete 1.mov media");
    EXPECT_EQ(searchKey("/m/a.wav", "a.wav", "/m/"), "a.wav a.wav m") << "a trailing slash names no folder";
}

TEST(SearchKey, SpellingsOfOneWordAgree) {
    EXPECT_EQ(searchFold("Cafe\u0301"), searchFold("Café"));
    EXPECT_EQ(searchFold("ＡＢＣ１２３"), "abc123");
    EXPECT_EQ(searchFold("ｶﾀｶﾅ"), searchFold("カタカナ"));
    EXPECT_EQ(searchFold("한국"), "한국");
}

TEST(SearchKey, NeverHoldsNulOrANoncharacter) {
    EXPECT_EQ(searchFold(std::string_view("a\0b\0", 4)), "a\uFFFDb\uFFFD");
    EXPECT_EQ(searchFold("x\uFFFEy\uFFFFz"), "x\uFFFDy\uFFFDz");
    EXPECT_EQ(searchFold("\xFF"), "\uFFFD");
}

TEST(SearchWords, AreFoldedAndSplitAtWhitespace) {
    EXPECT_THAT(searchWords("  雨 夜\tＭov\u3000É "), ElementsAre("雨", "夜", "mov", "e"));
    EXPECT_THAT(searchWords(" \u00A0\u3000\t"), IsEmpty());
    EXPECT_THAT(searchWords(""), IsEmpty());
    EXPECT_THAT(searchWords("\u0301"), IsEmpty()) << "a mark alone folds to nothing";
}

TEST(SearchKeys, BelongToTheRowsOfTheList) {
    AssetList::Builder builder;
    for (int number = 0; number < 10000; ++number) {  // enough for two threads
        const std::string relative = "Ordner/É " + std::to_string(number) + ".mov";
        builder.add("/R/" + relative, "/R", relative, 0, 0);
    }
    const SharedAssets list = builder.finish();
    const SearchKeys keys(*list);
    ASSERT_EQ(keys.size(), list->size());
    for (std::size_t row = 0; row < list->size(); ++row)
        ASSERT_EQ(keys.key(row), searchKey(list->path(row), list->at(row).relative, "/R"));
    EXPECT_EQ(keys.block().size(), keys.offset(keys.size()));
    EXPECT_EQ(keys.block().back(), '\0');
    EXPECT_EQ(SearchKeys().size(), 0U);
    EXPECT_EQ(SearchKeys(AssetList()).size(), 0U);
}

TEST(SearchKeys, OfAChangedListEqualThoseMadeAnew) {
    const SharedAssets old =
        listOf({assetBelow("/r", "a.mov"), assetBelow("/r", "b.mov"), assetBelow("/r", "c.mov")});
    Asset moved = assetBelow("/r", "b.mov");
    moved.relative = "elsewhere/b.mov";
    const SharedAssets changed = listOf({assetBelow("/r", "new.mov"), assetBelow("/r", "c.mov"), moved});
    const SearchKeys taken(*changed, *old, SearchKeys(*old));
    EXPECT_EQ(taken.block(), SearchKeys(*changed).block());
}

}  // namespace
}  // namespace morvane
