#include "catalog/settings.h"

#include <sys/stat.h>

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_read.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr const char* wholeFile =
    R"({"roots":["/b","/a"],"favorites":["/a/1.mov"],"recent":["/a/2.mov"],"autoplay":true})";

TEST(SettingsFile, ComesBackAsWritten) {
    const TemporaryFolder store;
    Settings settings;
    settings.roots = {"/b", "/a 雨"};
    settings.favorites = {"/a/1.mov", "/a/\"quoted\"\n.mov"};
    settings.recent = {"/a/3.mov", "/a/1.mov"};
    settings.autoplay = true;
    settings.pendingRefresh = false;
    saveSettings(store.path(), settings);
    EXPECT_EQ(loadSettings(store.path()), settings);
    EXPECT_THAT(listTree(store.path()), ElementsAre("settings.json")) << "no temporary file stays";
}

TEST(SettingsFile, HoldsPendingRefreshOnlyWhenItHasAValue) {
    const auto keys = [](const Settings& settings) {
        std::vector<std::string> names;
        const nlohmann::json object = parseJson(encodeSettings(settings));
        for (const auto& [key, value] : object.items())
            names.push_back(key);
        return names;
    };
    Settings settings;
    EXPECT_THAT(keys(settings), UnorderedElementsAre("roots", "favorites", "recent", "autoplay"));
    settings.pendingRefresh = true;
    EXPECT_THAT(keys(settings),
                UnorderedElementsAre("roots", "favorites", "recent", "autoplay", "pendingRefresh"));
    EXPECT_EQ(encodeSettings(settings).find('\n'), std::string::npos);
}

TEST(SettingsFile, AllFourKeysOrNone) {
    EXPECT_EQ(decodeSettings(wholeFile).pendingRefresh, std::nullopt);
    const nlohmann::json whole = parseJson(wholeFile);
    for (const char* key : {"roots", "favorites", "recent", "autoplay"}) {
        const TemporaryFolder store;
        nlohmann::json damaged = whole;
        damaged.erase(key);
        writeFile(store / "settings.json", damaged.dump());
        EXPECT_EQ(loadSettings(store.path()), Settings()) << key;
        damaged = whole;
        damaged[key] = 1;
        writeFile(store / "settings.json", damaged.dump());
        EXPECT_EQ(loadSettings(store.path()), Settings()) << key;
    }
    nlohmann::json mixed = whole;
    mixed["roots"] = {"/a", 1};
    EXPECT_THROW(decodeSettings(mixed.dump()), JsonError);
    mixed = whole;
    mixed["pendingRefresh"] = 1;
    EXPECT_THROW(decodeSettings(mixed.dump()), JsonError);
    mixed["pendingRefresh"] = nullptr;
    EXPECT_EQ(decodeSettings(mixed.dump()).pendingRefresh, std::nullopt);
    mixed["pendingRefresh"] = true;
    mixed["unknown"] = "ignored";
    EXPECT_EQ(decodeSettings(mixed.dump()).pendingRefresh, true);
}

TEST(SettingsFile, MissingOrUnreadableMeansDefaults) {
    const TemporaryFolder store;
    EXPECT_EQ(loadSettings(store.path()), Settings());
    EXPECT_THAT(listTree(store.path()), testing::IsEmpty()) << "reading writes nothing";
    std::filesystem::create_directory(store / "settings.json");
    EXPECT_EQ(loadSettings(store.path()), Settings());
    EXPECT_EQ(loadSettings(store / "absent"), Settings());
}

TEST(SettingsFile, AFailingSaveIsSilentAndLeavesTheOldFile) {
    const TemporaryFolder store;
    saveSettings(store / "absent", Settings());
    EXPECT_FALSE(std::filesystem::exists(store / "absent"));
    std::filesystem::create_directory(store / "settings.json");  // nothing can be renamed over a folder
    saveSettings(store.path(), Settings());
    EXPECT_THAT(listTree(store.path()), ElementsAre("settings.json/"));
}

TEST(SettingsFile, IsReplacedWholeNotWrittenInto) {
    const TemporaryFolder store;
    saveSettings(store.path(), Settings());
    struct stat before {};
    ASSERT_EQ(::stat((store / "settings.json").c_str(), &before), 0);
    std::filesystem::create_hard_link(store / "settings.json", store / "second name");
    const std::string old = readAll(store / "second name");
    Settings settings;
    settings.roots = {"/a"};
    saveSettings(store.path(), settings);
    EXPECT_EQ(readAll(store / "second name"), old);
    EXPECT_EQ(loadSettings(store.path()), settings);
}

TEST(SettingsFile, LeavesOutTextThatIsNoUtf8AndKeepsTheRest) {
    const TemporaryFolder store;
    Settings settings;
    settings.roots = {"/a", "/b\xFF"};
    saveSettings(store.path(), settings);
    EXPECT_THAT(loadSettings(store.path()).roots, ElementsAre("/a"));
}

TEST(SettingsWriter, WritesTheLastStateBeforeItGoes) {
    const TemporaryFolder store;
    Settings settings;
    {
        SettingsWriter writer(store.path());
        for (int number = 0; number < 50; ++number) {
            settings.roots = {"/r" + std::to_string(number)};
            writer.save(settings);
        }
    }
    EXPECT_THAT(loadSettings(store.path()).roots, ElementsAre("/r49"));
    SettingsWriter writer(store.path());
    writer.save(Settings());
    writer.flush();
    EXPECT_EQ(loadSettings(store.path()), Settings());
}

TEST(RecentList, PutsThePathFirstAndDropsItElsewhere) {
    std::vector<std::string> recent = {"/1", "/2", "/3", "/2"};
    rememberPath(recent, "/2");
    EXPECT_THAT(recent, ElementsAre("/2", "/1", "/3"));
    rememberPath(recent, recent.back());
    EXPECT_THAT(recent, ElementsAre("/3", "/2", "/1"));
    rememberPath(recent, "/4");
    EXPECT_THAT(recent, ElementsAre("/4", "/3", "/2", "/1"));
}

TEST(RecentList, NeverHoldsMoreThan150) {
    std::vector<std::string> recent;
    for (int number = 0; number < 151; ++number)
        rememberPath(recent, "/" + std::to_string(number));
    ASSERT_EQ(recent.size(), 150U);
    EXPECT_EQ(recent.front(), "/150");
    EXPECT_EQ(recent.back(), "/1");
    rememberPath(recent, "/75");
    EXPECT_EQ(recent.size(), 150U);
    EXPECT_EQ(recent.front(), "/75");
}

TEST(RenamedPath, IsFollowedByFavoritesAndRecent) {
    Settings settings;
    settings.favorites = {"/a", "/b"};
    settings.recent = {"/c", "/a", "/d"};
    followRename(settings, "/a", "/z");
    EXPECT_THAT(settings.favorites, UnorderedElementsAre("/b", "/z"));
    EXPECT_THAT(settings.recent, ElementsAre("/c", "/z", "/d"));
    followRename(settings, "/unknown", "/y");
    EXPECT_EQ(settings.favorites.count("/y"), 0U);
}

}  // namespace
}  // namespace morvane
