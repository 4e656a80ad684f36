// The looks of the window between runs.
#include "app/ui_state.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace morvane {
namespace {

using test::TemporaryFolder;
using test::waitUntil;

UiState sample() {
    UiState state;
    state.geometry = "AdnQywADAAA=";
    state.layout.treeWidth = 251;
    state.layout.previewWidth = 333;
    state.layout.nameWidth = 300;
    state.layout.folderWidth = 170;
    return state;
}

TEST(UiStateFile, ReadsBackWhatWasSaved) {
    const TemporaryFolder store;
    saveUiState(store.path(), sample());
    EXPECT_EQ(loadUiState(store.path()), sample());
    EXPECT_EQ(test::listTree(store.path()), std::vector<std::string>{"ui-state.json"});
}

class SpoiltFile : public testing::TestWithParam<std::string> {};

TEST_P(SpoiltFile, GivesTheInitialLooks) {
    const TemporaryFolder store;
    test::writeFile(store / "ui-state.json", GetParam());
    EXPECT_EQ(loadUiState(store.path()), UiState{});
}

INSTANTIATE_TEST_SUITE_P(
    Table, SpoiltFile,
    testing::Values(
        "", "[]", "{}", "{\"geometry\":3}", "{\"geometry\":\"\"}", "\xff\xfe",
        R"({"geometry":"","treeWidth":"240","previewWidth":384,"nameWidth":260,"folderWidth":150})",
        R"({"geometry":"","treeWidth":0,"previewWidth":384,"nameWidth":260,"folderWidth":150})",
        R"({"geometry":"","treeWidth":-5,"previewWidth":384,"nameWidth":260,"folderWidth":150})",
        R"({"geometry":"","treeWidth":1e9,"previewWidth":384,"nameWidth":260,"folderWidth":150})",
        std::string(70'000, ' ') + "{}"));

TEST(UiStateFile, AMissingFileOrFolderGivesTheInitialLooks) {
    const TemporaryFolder store;
    EXPECT_EQ(loadUiState(store.path()), UiState{});
    EXPECT_EQ(loadUiState(store / "nowhere"), UiState{});
    saveUiState(store / "nowhere", sample());  // silent
    EXPECT_TRUE(test::listTree(store.path()).empty());
}

TEST(UiStateKeeper, SavesOnceTheLooksRest) {
    const TemporaryFolder store;
    int asked = 0;
    UiStateKeeper keeper(store.path(), [&asked] {
        ++asked;
        return sample();
    });
    keeper.changed();
    keeper.changed();
    keeper.changed();
    EXPECT_EQ(asked, 0);
    EXPECT_TRUE(waitUntil([&] { return loadUiState(store.path()) == sample(); }));
    EXPECT_EQ(asked, 1);
}

TEST(UiStateKeeper, SavesAtTheEndWhatHasNotRested) {
    const TemporaryFolder store;
    {
        UiStateKeeper keeper(store.path(), [] { return sample(); });
        keeper.changed();
    }
    EXPECT_EQ(loadUiState(store.path()), sample());
}

TEST(UiStateKeeper, WritesNothingWhenNothingChanged) {
    const TemporaryFolder store;
    {
        const UiStateKeeper keeper(store.path(), [] { return sample(); });
    }
    EXPECT_TRUE(test::listTree(store.path()).empty());
}

}  // namespace
}  // namespace morvane
