#include "catalog/catalog_repository.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/sqlite.h"
#include "tests/catalog/catalog_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class Repository : public testing::Test {
protected:
    std::string save(const SharedAssets& list) { return catalog_.save(*list, *keysOf(list)); }
    void makeNewer() const { Connection(store_ / "catalog.sqlite").execute("PRAGMA user_version=2"); }

    TemporaryFolder store_;
    CatalogRepository catalog_{store_.path()};
};

TEST_F(Repository, OpensNothingBeforeItIsUsed) {
    EXPECT_EQ(catalog_.directory(), store_.path());
    EXPECT_EQ(catalog_.database(), nullptr);
    EXPECT_FALSE(catalog_.isSynchronized());
    EXPECT_THAT(listTree(store_.path()), IsEmpty());
}

TEST_F(Repository, LoadsWhatWasSaved) {
    EXPECT_EQ(save(listOf({assetBelow("/r", "Ｂ.mov"), assetBelow("/r", "a.wav")})), "");
    EXPECT_TRUE(catalog_.isSynchronized());
    CatalogRepository next(store_.path());
    const LoadedLibrary library = next.load();
    EXPECT_TRUE(next.isSynchronized());
    EXPECT_EQ(library.notice, "");
    EXPECT_THAT(pathsOf(*library.assets), ElementsAre("/r/Ｂ.mov", "/r/a.wav"));
    ASSERT_EQ(library.keys->size(), 2U);
    EXPECT_EQ(library.keys->key(0), "b.mov b.mov r");
}

TEST_F(Repository, FallsBackToTheOlderIndexWhenTheCatalogIsNewer) {
    makeNewer();
    const std::string before = readAll(store_ / "catalog.sqlite");
    writeFile(store_ / "index.json", encodeAssets(*listOf({assetBelow("/r", "old.mov")})).dump());
    const LoadedLibrary library = catalog_.load();
    EXPECT_EQ(library.notice,
              "索引数据库未就绪，正在使用恢复副本：索引来自更新版本的软件，请先更新素材助手。");
    EXPECT_THAT(pathsOf(*library.assets), ElementsAre("/r/old.mov"));
    EXPECT_EQ(library.keys->key(0), "old.mov old.mov r");
    EXPECT_FALSE(catalog_.isSynchronized());
    EXPECT_EQ(catalog_.database(), nullptr);
    EXPECT_EQ(readAll(store_ / "catalog.sqlite"), before);
    EXPECT_EQ(save(library.assets), " · 索引保存失败，本次使用内存结果，请刷新重试");
    EXPECT_EQ(readAll(store_ / "catalog.sqlite"), before);
}

TEST_F(Repository, RecoversToAnEmptyLibraryWithoutAUsableOlderIndex) {
    makeNewer();
    EXPECT_EQ(catalog_.load().assets->size(), 0U);
    writeFile(store_ / "index.json", "[{}]");
    const LoadedLibrary library = catalog_.load();
    EXPECT_EQ(library.assets->size(), 0U);
    EXPECT_EQ(library.keys->size(), 0U);
    EXPECT_THAT(library.notice, StartsWith("索引数据库未就绪，正在使用恢复副本："));
}

TEST_F(Repository, TriesToOpenAgainAfterAFailure) {
    makeNewer();
    EXPECT_THROW(catalog_.connection(), CatalogError);
    EXPECT_THROW(catalog_.connection(), CatalogError);
    std::filesystem::remove(store_ / "catalog.sqlite");
    EXPECT_NO_THROW(catalog_.connection());
    EXPECT_NE(catalog_.database(), nullptr);
    EXPECT_EQ(&catalog_.connection(), catalog_.database()) << "an open store is kept";
}

TEST_F(Repository, AFailedSaveLeavesItOutOfStepUntilOneSucceeds) {
    const SharedAssets list = listOf({assetBelow("/r", "a.mov")});
    ASSERT_EQ(save(list), "");
    Connection(store_ / "catalog.sqlite").execute("ALTER TABLE assets RENAME TO hidden");
    EXPECT_EQ(save(list), " · 索引保存失败，本次使用内存结果，请刷新重试");
    EXPECT_FALSE(catalog_.isSynchronized());
    Connection(store_ / "catalog.sqlite").execute("ALTER TABLE hidden RENAME TO assets");
    EXPECT_EQ(save(list), "");
    EXPECT_TRUE(catalog_.isSynchronized());
}

TEST_F(Repository, AFailedQueryLeavesItOutOfStep) {
    ASSERT_EQ(save(listOf({assetBelow("/r", "a.mov")})), "");
    EXPECT_EQ(catalog_.query({})->size(), 1U);
    EXPECT_TRUE(catalog_.isSynchronized());
    Connection(store_ / "catalog.sqlite").execute("DROP TABLE assets");
    EXPECT_THROW(catalog_.query({}), CatalogError);
    EXPECT_FALSE(catalog_.isSynchronized());
}

}  // namespace
}  // namespace morvane
