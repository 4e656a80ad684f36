#include "catalog/rename_asset.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/library_scan.h"
#include "tests/catalog/catalog_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;

namespace fs = std::filesystem;

TEST(RenameTarget, KeepsFolderAndExtension) {
    const Asset asset = assetBelow("/r", "a/Take 1.MOV");
    EXPECT_EQ(renameTarget(asset, "Take 2"), "/r/a/Take 2.MOV");
    EXPECT_EQ(renameTarget(asset, " \t 雨 夜 \n"), "/r/a/雨 夜.MOV") << "trimmed";
    EXPECT_EQ(renameTarget(asset, "x.wav"), "/r/a/x.wav.MOV") << "the extension cannot be changed";
    EXPECT_EQ(renameTarget(asset, "Take 1"), asset.path);
    EXPECT_EQ(renameTarget(assetBelow("/r", "README"), "NEWS"), "/r/NEWS");
}

class InvalidName : public testing::TestWithParam<std::string> {};

TEST_P(InvalidName, IsRefused) {
    try {
        renameTarget(assetBelow("/r", "1.mov"), GetParam());
        FAIL() << GetParam();
    } catch (const RenameError& error) {
        EXPECT_STREQ(error.what(), "名称不能为空、以点开头，或包含 /、:、换行等特殊字符。");
        EXPECT_EQ(RenameError::domain, "SORELKLibrary");
        EXPECT_EQ(RenameError::code, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Names, InvalidName,
                         testing::Values("", "   ", "\n", ".hidden", "  .hidden", "a/b", "a:b", "a\nb",
                                         std::string("a\0b", 3), "..", "/"));

class Rename : public testing::Test {
protected:
    Asset asset(const std::string& relative) const { return assetBelow(folder_.path(), relative); }
    std::string failureOf(const Asset& asset, const std::string& baseName) const {
        try {
            renameAsset(asset, baseName);
        } catch (const RenameError& error) {
            return error.what();
        }
        return {};
    }

    TemporaryFolder folder_;
};

constexpr const char* taken = "同一文件夹内已存在该名称，请换一个名称；不会覆盖已有文件。";

TEST_F(Rename, MovesTheFileAndTellsItsNewPlace) {
    writeFile(folder_ / "a/1.mov", "content");
    const Asset renamed = renameAsset(asset("a/1.mov"), " 雨 ");
    EXPECT_EQ(renamed.path, folder_ / "a/雨.mov");
    EXPECT_EQ(renamed.relative, "a/雨.mov");
    EXPECT_EQ(renamed.root, folder_.path());
    EXPECT_EQ(renamed.size, 100);
    EXPECT_THAT(listTree(folder_.path()), ElementsAre("a/", "a/雨.mov"));
    EXPECT_EQ(readAll(renamed.path), "content");
}

TEST_F(Rename, GivesTheRelativeAScanWouldGive) {
    writeFile(folder_ / "a/1.mov", "");
    Asset slashed = asset("a/1.mov");
    slashed.root = folder_.path() + "/";
    const Asset renamed = renameAsset(slashed, "2");
    ScanRequest request;
    request.roots = {slashed.root};
    EXPECT_EQ(renamed.relative, scanLibrary(request).assets->at(0).relative);
}

TEST_F(Rename, TheSameNameMovesNothing) {
    const Asset same = renameAsset(asset("absent.mov"), "absent");
    EXPECT_EQ(same.path, folder_ / "absent.mov");
}

TEST_F(Rename, NeverReplacesASibling) {
    makeTree(folder_.path(), {{"1.mov", "one"}, {"2.mov", "two"}, {"3.mov/", ""}});
    EXPECT_EQ(failureOf(asset("1.mov"), "2"), taken);
    EXPECT_EQ(failureOf(asset("1.mov"), "3"), taken);
    fs::create_symlink("nowhere", folder_ / "4.mov");
    EXPECT_EQ(failureOf(asset("1.mov"), "4"), taken) << "a link to nothing is in the way too";
    EXPECT_EQ(readAll(folder_ / "1.mov"), "one");
    EXPECT_EQ(readAll(folder_ / "2.mov"), "two");
}

TEST_F(Rename, AnInvalidNameTouchesNothing) {
    writeFile(folder_ / "1.mov", "one");
    EXPECT_EQ(failureOf(asset("1.mov"), "a/b"), "名称不能为空、以点开头，或包含 /、:、换行等特殊字符。");
    EXPECT_THAT(listTree(folder_.path()), ElementsAre("1.mov"));
}

TEST_F(Rename, AFailingMoveIsPassedOn) {
    const auto errorOf = [](const Asset& asset, const std::string& name) {
        try {
            renameAsset(asset, name);
        } catch (const std::system_error& error) {
            return error.code().value();
        }
        return 0;
    };
    EXPECT_EQ(errorOf(asset("absent.mov"), "new"), ENOENT);
    writeFile(folder_ / "1.mov", "");
    EXPECT_EQ(errorOf(asset("1.mov"), std::string(300, 'x')), ENAMETOOLONG);
    EXPECT_THAT(listTree(folder_.path()), ElementsAre("1.mov"));
}

// --- the list that follows

TEST(RenamedList, HoldsTheAssetInItsNewPlace) {
    const SharedAssets list =
        listOf({assetBelow("/r", "1.mov"), assetBelow("/r", "2.mov"), assetBelow("/r", "x/3.mov")});
    const RenamedLibrary library = withRenamed(list, keysOf(list), "/r/1.mov", assetBelow("/r", "É 10.mov"));
    EXPECT_THAT(pathsOf(*library.assets), ElementsAre("/r/2.mov", "/r/x/3.mov", "/r/É 10.mov"));
    EXPECT_EQ(library.assets->rowOf("/r/1.mov"), std::nullopt);
    EXPECT_EQ(library.keys->block(), SearchKeys(*library.assets).block());
    EXPECT_EQ(library.keys->key(2), "e 10.mov e 10.mov r");
    EXPECT_THAT(pathsOf(*list), ElementsAre("/r/1.mov", "/r/2.mov", "/r/x/3.mov")) << "the old list stays";
}

TEST(RenamedList, DropsAStaleEntryOfTheNewPath) {
    const SharedAssets list = listOf({assetBelow("/r", "1.mov"), assetBelow("/r", "2.mov")});
    Asset renamed = assetBelow("/r", "1.mov");
    renamed.size = 77;
    const RenamedLibrary library = withRenamed(list, keysOf(list), "/r/2.mov", renamed);
    ASSERT_THAT(pathsOf(*library.assets), ElementsAre("/r/1.mov"));
    EXPECT_EQ(library.assets->at(0).size, 77);
}

TEST(RenamedList, IsTheSameWhenNothingChanges) {
    const SharedAssets list = listOf({assetBelow("/r", "1.mov")});
    const SharedKeys keys = keysOf(list);
    EXPECT_EQ(withRenamed(list, keys, "/r/1.mov", assetBelow("/r", "1.mov")).assets, list);
    EXPECT_EQ(withRenamed(list, keys, "/r/absent.mov", assetBelow("/r", "9.mov")).keys, keys);
}

}  // namespace
}  // namespace morvane
