#include "catalog/asset_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_read.h"
#include "tests/catalog/catalog_fixture.h"

namespace morvane {
namespace {

using namespace morvane::test;

using testing::ElementsAre;

TEST(AssetList, GivesBackEveryField) {
    const SharedAssets list = listOf({{"/m/a/1.mov", "/m", "a/1.mov", 7, 1.5},
                                      {"/n/2.wav", "/n/", "2.wav", 8, -2.25},
                                      {"/m/3.cube", "/m", "elsewhere.cube", 9, 0},
                                      {"/m/4.png", "/m", "", 0, 0}});
    ASSERT_EQ(list->size(), 4U);
    const AssetView first = list->at(0);
    EXPECT_EQ(first.path, "/m/a/1.mov");
    EXPECT_EQ(first.root, "/m");
    EXPECT_EQ(first.relative, "a/1.mov");
    EXPECT_EQ(first.folder(), "a");
    EXPECT_EQ(first.name(), "1.mov");
    EXPECT_EQ(first.size, 7);
    EXPECT_EQ(first.modified, 1.5);
    EXPECT_EQ(first.kind(), "视频");
    EXPECT_EQ(list->at(1).root, "/n/");
    EXPECT_EQ(list->at(1).modified, -2.25);
    EXPECT_EQ(list->at(1).folder(), "");
    EXPECT_EQ(list->at(2).relative, "elsewhere.cube") << "a relative that is no ending of the path";
    EXPECT_EQ(list->at(2).symbol(), "doc");
    EXPECT_EQ(list->at(3).relative, "");
    EXPECT_EQ(list->mediaKind(1), MediaKind::Audio);
    EXPECT_THAT(list->roots(), ElementsAre("/m", "/n/"));
    EXPECT_EQ(list->rootOf(2), 0U);
    const Asset whole = list->asset(2);
    EXPECT_EQ(whole.path, "/m/3.cube");
    EXPECT_EQ(whole.size, 9);
}

TEST(AssetList, KeepsTheFirstOfEqualPaths) {
    AssetList::Builder builder;
    EXPECT_TRUE(builder.add("/a/1.mov", "/a", "1.mov", 1, 1));
    EXPECT_FALSE(builder.add("/a/1.mov", "/", "a/1.mov", 2, 2));
    EXPECT_TRUE(builder.contains("/a/1.mov"));
    const SharedAssets list = builder.finish();
    ASSERT_EQ(list->size(), 1U);
    EXPECT_EQ(list->at(0).root, "/a");
    EXPECT_EQ(builder.size(), 0U);
    EXPECT_FALSE(builder.contains("/a/1.mov"));
}

TEST(AssetList, FindsEveryPathAlsoAfterSorting) {
    AssetList::Builder builder;
    constexpr int count = 5000;
    for (int number = 0; number < count; ++number) {
        const std::string relative =
            "d" + std::to_string(number % 7) + "/n" + std::to_string((number * 37) % count) + ".mov";
        builder.add("/r/" + relative, "/r", relative, number, 0);
    }
    const SharedAssets list = builder.finishSorted();
    ASSERT_EQ(list->size(), static_cast<std::size_t>(count));
    for (std::size_t row = 0; row < list->size(); ++row)
        ASSERT_EQ(list->rowOf(list->path(row)), row);
    EXPECT_EQ(list->rowOf("/r/absent.mov"), std::nullopt);
    EXPECT_EQ(AssetList().rowOf("/r/absent.mov"), std::nullopt);
}

TEST(AssetList, SortsByNameAsAFileBrowserAndKeepsEqualNamesInOrder) {
    AssetList::Builder builder;
    for (const char* relative : {"z/Take 10.wav", "y/take 2.wav", "x/Take 2.WAV", "a/Take 1.wav"})
        builder.add(std::string("/r/") + relative, "/r", relative, 0, 0);
    builder.add("/r/odd.mov", "/r", "apart", 0, 0);
    const SharedAssets list = builder.finishSorted();
    EXPECT_THAT(relativesOf(*list),
                ElementsAre("apart", "a/Take 1.wav", "y/take 2.wav", "x/Take 2.WAV", "z/Take 10.wav"));
}

TEST(AssetList, StaysSmall) {
    AssetList::Builder builder;
    constexpr std::size_t count = 20000;
    std::size_t pathBytes = 0;
    for (std::size_t number = 0; number < count; ++number) {
        const std::string relative = "folder/clip " + std::to_string(number) + ".mov";
        builder.add("/library/" + relative, "/library", relative, 1, 1);
        pathBytes += relative.size() + 9;
    }
    EXPECT_LE(builder.finish()->memoryBytes(), pathBytes + count * 48);
}

TEST(OlderIndex, IsReadInOrder) {
    const SharedAssets list = listOf({assetBelow("/a", "2.mov"), assetBelow("/a", "x/1.wav")});
    const SharedAssets read = decodeAssets(encodeAssets(*list).dump());
    EXPECT_THAT(pathsOf(*read), ElementsAre("/a/2.mov", "/a/x/1.wav"));
    EXPECT_EQ(read->at(1).relative, "x/1.wav");
    EXPECT_EQ(decodeAssets("[]")->size(), 0U);
}

TEST(OlderIndex, OfTwoRecordsOfOnePathTheLaterCounts) {
    const SharedAssets list = decodeAssets(R"([
        {"path":"/a/1.mov","root":"/a","relative":"1.mov","size":1,"modified":1},
        {"path":"/a/2.mov","root":"/a","relative":"2.mov","size":2,"modified":2},
        {"path":"/a/1.mov","root":"/a","relative":"1.mov","size":3,"modified":3}])");
    EXPECT_THAT(pathsOf(*list), ElementsAre("/a/2.mov", "/a/1.mov"));
    EXPECT_EQ(list->at(1).size, 3);
}

TEST(OlderIndex, LeavesOutPathsWithANulCharacter) {
    const SharedAssets list = decodeAssets(R"([
        {"path":"/a/1\u0000.mov","root":"/a","relative":"1.mov","size":1,"modified":1},
        {"path":"/a/2.mov","root":"/a","relative":"2.mov","size":2,"modified":2}])");
    EXPECT_THAT(pathsOf(*list), ElementsAre("/a/2.mov"));
}

class DamagedIndex : public testing::TestWithParam<const char*> {};

TEST_P(DamagedIndex, IsRefusedWhole) {
    EXPECT_THROW(decodeAssets(GetParam()), JsonError) << GetParam();
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DamagedIndex,
    testing::Values(
        "", "{}", "[", "null", "[1]", "[[]]", "[null]", "[{}]", "\"x\"", "[] trailing",
        R"([{"path":"/a/1.mov","root":"/a","relative":"1.mov","size":1}])",
        R"([{"path":"/a/1.mov","root":"/a","relative":"1.mov","size":"1","modified":1}])",
        R"([{"path":"/a/1.mov","root":"/a","relative":"1.mov","size":1.5,"modified":1}])",
        "[{\"path\":\"/a/\xFF.mov\",\"root\":\"/a\",\"relative\":\"\",\"size\":1,\"modified\":1}]"));

}  // namespace
}  // namespace morvane
