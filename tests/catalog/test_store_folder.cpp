#include "catalog/store_folder.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;

class StoreFolder : public testing::Test {
protected:
    void SetUp() override { ::setenv("XDG_DATA_HOME", data_.path().c_str(), 1); }
    void TearDown() override { ::unsetenv("XDG_DATA_HOME"); }
    std::string ordinary() const { return data_ / "LumvexAssetLibrary"; }

    TemporaryFolder data_;
};

TEST_F(StoreFolder, LiesInTheUsersDataFolder) {
    EXPECT_EQ(storeFolder({"morvane"}), ordinary());
    EXPECT_EQ(storeFolder({}), ordinary());
    EXPECT_FALSE(std::filesystem::exists(ordinary())) << "the rule creates nothing";
}

TEST_F(StoreFolder, OfASmokeTestLiesInItsOutputFolder) {
    EXPECT_EQ(storeFolder({"morvane", "--ui-smoke-test", "/tmp/out"}), "/tmp/out/IsolatedTestData");
    EXPECT_EQ(storeFolder({"morvane", "--ui-smoke-test", "/tmp/out/"}), "/tmp/out/IsolatedTestData");
    EXPECT_EQ(storeFolder({"--ui-smoke-test", "/x"}), "/x/IsolatedTestData") << "the first entry counts too";
}

TEST_F(StoreFolder, OnlyTheFirstFlagCounts) {
    EXPECT_EQ(storeFolder({"m", "--ui-smoke-test", "/1", "--ui-smoke-test", "/2"}), "/1/IsolatedTestData");
    EXPECT_EQ(storeFolder({"m", "--ui-smoke-test", "--ui-smoke-test", "/2"}),
              "--ui-smoke-test/IsolatedTestData");
}

TEST_F(StoreFolder, AFlagAtTheEndMeansTheOrdinaryFolder) {
    EXPECT_EQ(storeFolder({"morvane", "--ui-smoke-test"}), ordinary());
}

TEST_F(StoreFolder, IsCreatedWithTheFoldersAboveAndFailuresAreSilent) {
    createStoreFolder(data_ / "a/b/c");
    EXPECT_TRUE(std::filesystem::is_directory(data_ / "a/b/c"));
    createStoreFolder(data_ / "a/b/c");
    writeFile(data_ / "file", "");
    createStoreFolder(data_ / "file/below");
    EXPECT_FALSE(std::filesystem::exists(data_ / "file/below"));
}

}  // namespace
}  // namespace morvane
