// library, search and categories as a script uses them: real folders, a real store, the built program.
#include <csignal>
#include <filesystem>

#include <sqlite3.h>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "catalog/settings.h"
#include "platform/single_instance.h"
#include "tests/ctl/ctl_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using nlohmann::json;
using test::CtlOutcome;
using test::makeTree;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class LibraryCommands : public testing::Test {
protected:
    CtlOutcome run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--store", store_});
        return test::runCtl(arguments);
    }
    json runJson(std::vector<std::string> arguments) {
        arguments.emplace_back("--json");
        const CtlOutcome outcome = run(std::move(arguments));
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return json::parse(outcome.output);
    }
    /// File names of an array of assets, in its order.
    static std::vector<std::string> names(const json& assets) {
        std::vector<std::string> list;
        for (const json& asset : assets)
            list.push_back(std::filesystem::path(asset["path"].get<std::string>()).filename());
        return list;
    }
    void makeMedia() {
        makeTree(media_, {{"日落/Take 10.wav", "0123456789"},
                          {"日落/Take 2.wav", "0"},
                          {"日落/clip.MOV", "12"},
                          {"café/100%_\\'\"photo.png", "123"},
                          {"look.cube", "1"},
                          {"readme.txt", "not indexed"},
                          {".hidden/secret.mov", "not indexed"}});
    }

    /// A connection that keeps every other one out of the catalog until it is closed.
    sqlite3* lockedCatalog() const {
        sqlite3* catalog = nullptr;
        EXPECT_EQ(sqlite3_open((store_ + "/catalog.sqlite").c_str(), &catalog), SQLITE_OK);
        // A reader in write-ahead mode is held up only by an exclusive lock of the whole file.
        EXPECT_EQ(sqlite3_exec(catalog, "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE", nullptr, nullptr,
                               nullptr),
                  SQLITE_OK);
        return catalog;
    }

    const TemporaryFolder folder_;
    const std::string store_ = folder_ / "store";
    const std::string media_ = folder_ / "media";
};

/// "morvanectl: " and one line.
void expectOneLine(const CtlOutcome& outcome, const std::string& part) {
    EXPECT_THAT(outcome.errors, StartsWith("morvanectl: "));
    EXPECT_THAT(outcome.errors, HasSubstr(part));
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    EXPECT_THAT(outcome.errors, EndsWith("\n"));
}

TEST_F(LibraryCommands, AddIndexesAndTellsTheSummary) {
    makeMedia();
    const json added = runJson({"library", "add", media_});
    EXPECT_EQ(added, json({{"summary", "1 个素材文件夹 · 5 个素材"},
                           {"assetCount", 5},
                           {"offline", json::array()},
                           {"unreadable", 0},
                           {"notice", ""}}));
    EXPECT_EQ(runJson({"library", "list"}), json::array({media_}));
    const Settings settings = loadSettings(store_);
    EXPECT_THAT(settings.roots, ElementsAre(media_));
    EXPECT_EQ(settings.pendingRefresh, false);
}

TEST_F(LibraryCommands, AddingAgainOrUnderAnotherSpellingAddsNothing) {
    makeMedia();
    runJson({"library", "add", media_, media_ + "/../media/"});
    runJson({"library", "add", media_});
    EXPECT_EQ(runJson({"library", "list"}), json::array({media_}));
}

TEST_F(LibraryCommands, RemoveTakesTheFolderOutAndLeavesTheFiles) {
    makeMedia();
    makeTree(folder_ / "other", {{"a.mp3", "1"}});
    runJson({"library", "add", media_, folder_ / "other"});
    const json removed = runJson({"library", "remove", media_});
    EXPECT_EQ(removed["assetCount"], 1);
    EXPECT_EQ(removed["summary"], "1 个素材文件夹 · 1 个素材");
    EXPECT_TRUE(std::filesystem::exists(media_ + "/look.cube"));
    EXPECT_EQ(names(runJson({"search"})), (std::vector<std::string>{"a.mp3"}));
}

TEST_F(LibraryCommands, RemoveTakesAnySpellingAndARepeatedName) {
    makeMedia();
    Settings settings;
    settings.roots = {media_ + "/", media_, folder_ / "b/", folder_ / "c"};
    std::filesystem::create_directory(store_);
    saveSettings(store_, settings);
    runJson({"library", "remove", folder_ / "b", folder_ / "b/", folder_ / "x/../b"});
    EXPECT_EQ(runJson({"library", "list"}), json::array({media_ + "/", media_, folder_ / "c"}));
    runJson({"library", "remove", media_, media_});
    EXPECT_EQ(runJson({"library", "list"}), json::array({media_ + "/", folder_ / "c"}))
        << "where both spellings are there, the one that was named";
    runJson({"library", "remove", media_});
    EXPECT_EQ(runJson({"library", "list"}), json::array({folder_ / "c"}));
}

TEST_F(LibraryCommands, AnOfflineFolderKeepsItsAssets) {
    makeMedia();
    runJson({"library", "add", media_});
    std::filesystem::rename(media_, folder_ / "unplugged");
    const json refreshed = runJson({"library", "refresh"});
    EXPECT_EQ(refreshed["offline"], json::array({"media"}));
    EXPECT_EQ(refreshed["assetCount"], 5);
    EXPECT_EQ(refreshed["summary"], "离线：media · 已保留索引，连接硬盘后刷新");
}

TEST_F(LibraryCommands, SearchGivesAssetsInListOrder) {
    makeMedia();
    runJson({"library", "add", media_});
    const json found = runJson({"search", "TAKE"});
    EXPECT_EQ(names(found), (std::vector<std::string>{"Take 2.wav", "Take 10.wav"}));
    EXPECT_EQ(found[1]["path"], media_ + "/日落/Take 10.wav");
    EXPECT_EQ(found[1]["root"], media_);
    EXPECT_EQ(found[1]["relative"], "日落/Take 10.wav");
    EXPECT_EQ(found[1]["size"], 10);
    EXPECT_TRUE(found[1]["modified"].is_number());
    EXPECT_EQ(found[1].size(), 5U);
}

TEST_F(LibraryCommands, BracketsAndBracesAreLettersLikeAnyOther) {
    makeTree(media_,
             {{"[x,y].wav", "1"}, {"x_y.wav", "1"}, {"{}.wav", "1"}, {"[].wav", "1"}, {"[z].wav", "1"}});
    runJson({"library", "add", media_});
    const auto found = [this](const std::vector<std::string>& words) {
        std::vector<std::string> arguments = {"search"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        return names(runJson(arguments));
    };
    EXPECT_THAT(found({"[x,y]"}), ElementsAre("[x,y].wav"));
    EXPECT_THAT(found({"{}"}), ElementsAre("{}.wav"));
    EXPECT_THAT(found({"[]"}), ElementsAre("[].wav"));
    EXPECT_THAT(found({"[z]", "WAV"}), ElementsAre("[z].wav"));
    EXPECT_EQ(run({"search", "--kind", "[音频]"}).status, 64);
    const std::string bracketed = folder_ / "[a,b]";
    std::filesystem::create_directory(bracketed);
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(folder_ / "");
    runJson({"library", "add", "[a,b]"});
    std::filesystem::current_path(before);
    EXPECT_EQ(runJson({"library", "list"}), json::array({media_, bracketed}));
}

TEST_F(LibraryCommands, SearchNarrowsByWordsKindAndScope) {
    makeMedia();
    runJson({"library", "add", media_});
    EXPECT_EQ(names(runJson({"search", "--kind", "视频"})), (std::vector<std::string>{"clip.MOV"}));
    EXPECT_EQ(names(runJson({"search", "--kind", "其他"})), (std::vector<std::string>{"look.cube"}));
    EXPECT_EQ(names(runJson({"search", "--scope", media_ + "/日落", "mov"})),
              (std::vector<std::string>{"clip.MOV"}));
    EXPECT_EQ(names(runJson({"search", "cafe", "%_"})), (std::vector<std::string>{"100%_\\'\"photo.png"}));
    EXPECT_EQ(names(runJson({"search", "日落 2"})), (std::vector<std::string>{"Take 2.wav"}));
    EXPECT_EQ(runJson({"search", "--scope", "favorites"}), json::array());
    EXPECT_EQ(runJson({"search", "nothing-like-it"}), json::array());
}

TEST_F(LibraryCommands, FavoritesAndRecentComeFromTheSettings) {
    makeMedia();
    runJson({"library", "add", media_});
    Settings settings = loadSettings(store_);
    settings.favorites = {media_ + "/look.cube"};
    settings.recent = {media_ + "/日落/clip.MOV", media_ + "/look.cube"};
    saveSettings(store_, settings);
    EXPECT_EQ(names(runJson({"search", "--scope", "favorites"})), (std::vector<std::string>{"look.cube"}));
    EXPECT_EQ(names(runJson({"search", "--scope", "recent"})),
              (std::vector<std::string>{"clip.MOV", "look.cube"}));
    const json tree = runJson({"categories"});
    EXPECT_EQ(tree[1]["count"], 1);
    EXPECT_EQ(tree[2]["count"], 2);
}

TEST_F(LibraryCommands, CategoriesHoldTheFolderTree) {
    makeMedia();
    runJson({"library", "add", media_});
    const json tree = runJson({"categories"});
    ASSERT_EQ(tree.size(), 4U);
    EXPECT_EQ(tree[0],
              json({{"title", "全部素材"}, {"key", "all"}, {"count", 5}, {"children", json::array()}}));
    EXPECT_EQ(tree[3]["title"], "media");
    EXPECT_EQ(tree[3]["key"], media_);
    EXPECT_EQ(tree[3]["count"], 5);
    ASSERT_EQ(tree[3]["children"].size(), 2U);
    for (const json& child : tree[3]["children"])
        EXPECT_EQ(child["key"], media_ + "/" + child["title"].get<std::string>());
}

TEST_F(LibraryCommands, TextForPeople) {
    makeMedia();
    EXPECT_EQ(run({"library", "add", media_}).output, "1 个素材文件夹 · 5 个素材\n");
    EXPECT_EQ(run({"library", "list"}).output, media_ + "\n");
    const CtlOutcome found = run({"search", "clip"});
    EXPECT_EQ(found.output, "视频  2 字节  " + media_ + "/日落/clip.MOV\n1 项\n");
    EXPECT_THAT(run({"categories"}).output,
                StartsWith("全部素材  5\n我的收藏  0\n最近使用  0\nmedia  5\n  "));
}

TEST_F(LibraryCommands, NoProgressIsWrittenWhenNobodyWatches) {
    makeMedia();
    const CtlOutcome outcome = run({"library", "add", media_});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(LibraryCommands, NamesThatAreNoUtf8HarmNothing) {
    makeTree(media_, {{"ok.mov", "1"}, {"bad\xff\xfe.mov", "1"}, {"bad\xff/inside.mov", "1"}});
    const json added = runJson({"library", "add", media_});
    EXPECT_EQ(added["assetCount"], 1);
    EXPECT_GE(added["unreadable"].get<int>(), 1);
    EXPECT_EQ(runJson({"search", "\xff\xfe"}), json::array());

    makeTree(folder_ / "odd\xff", {{"a.mov", "1"}});
    const CtlOutcome refused = run({"library", "add", folder_ / "odd\xff", "--json"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, "");
    expectOneLine(refused, "UTF-8");
    EXPECT_EQ(runJson({"library", "list"}), json::array({media_}));
}

TEST_F(LibraryCommands, ANameWithLineBreaksStaysOneErrorLine) {
    const CtlOutcome refused = run({"library", "add", folder_ / "no\nsuch\r\x1b[31mfolder"});
    EXPECT_EQ(refused.status, 1);
    expectOneLine(refused, "no?such??[31mfolder");
}

TEST_F(LibraryCommands, AFaultyFolderChangesNothing) {
    makeMedia();
    runJson({"library", "add", media_});
    expectOneLine(run({"library", "add", folder_ / "missing", media_ + "/日落"}), "missing");
    expectOneLine(run({"library", "remove", folder_ / "missing"}), "missing");
    EXPECT_EQ(run({"library", "remove", media_, folder_ / "missing"}).status, 1);
    EXPECT_EQ(runJson({"library", "list"}), json::array({media_}));
}

TEST_F(LibraryCommands, ADamagedCatalogFailsSearchAndIsLeftAloneByRefresh) {
    makeMedia();
    runJson({"library", "add", media_});
    std::filesystem::remove(store_ + "/catalog.sqlite");
    test::writeFile(store_ + "/catalog.sqlite", "this is no database, by far not");
    const CtlOutcome outcome = run({"search"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    expectOneLine(outcome, "");
    const std::string settings = test::readAll(store_ + "/settings.json");
    for (const char* command : {"refresh", "add", "remove"}) {
        std::vector<std::string> arguments{"library", command, "--json"};
        if (arguments[1] != "refresh")
            arguments.push_back(arguments[1] == "add" ? folder_.path() : media_);
        const CtlOutcome refreshed = run(arguments);
        EXPECT_EQ(refreshed.status, 1) << command;
        EXPECT_EQ(refreshed.output, "") << command;
        EXPECT_EQ(refreshed.errors, outcome.errors) << command;
    }
    EXPECT_EQ(test::readAll(store_ + "/settings.json"), settings);
    EXPECT_EQ(test::readAll(store_ + "/catalog.sqlite"), "this is no database, by far not");
}

TEST_F(LibraryCommands, ALockedCatalogKeepsTheRowsOfAnOfflineFolder) {
    makeMedia();
    runJson({"library", "add", media_});
    std::filesystem::rename(media_, folder_ / "unplugged");
    sqlite3* catalog = lockedCatalog();
    const CtlOutcome refused = run({"library", "refresh"});
    sqlite3_close(catalog);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, "");
    expectOneLine(refused, "database is locked");
    EXPECT_EQ(runJson({"library", "refresh"})["assetCount"], 5);
}

TEST_F(LibraryCommands, AFailedSaveIsToldAndLeavesTheRefreshPending) {
    makeMedia();
    runJson({"library", "add", media_});
    sqlite3* catalog = nullptr;
    ASSERT_EQ(sqlite3_open((store_ + "/catalog.sqlite").c_str(), &catalog), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(catalog,
                           "CREATE TRIGGER refusal BEFORE INSERT ON assets BEGIN SELECT RAISE(ABORT,'no'); "
                           "END",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(catalog);
    makeTree(media_, {{"new.mov", "1"}});
    const CtlOutcome refreshed = run({"library", "refresh", "--json"});
    EXPECT_EQ(refreshed.status, 1);
    const json document = json::parse(refreshed.output);
    EXPECT_EQ(document["notice"], " · 索引保存失败，本次使用内存结果，请刷新重试");
    EXPECT_EQ(document["assetCount"], 6);
    expectOneLine(refreshed, "索引保存失败");
    EXPECT_EQ(loadSettings(store_).pendingRefresh, true);
}

TEST_F(LibraryCommands, AStopSignalEndsARefreshAndLeavesItPending) {
    makeMedia();
    runJson({"library", "add", media_});
    sqlite3* catalog = lockedCatalog();
    test::RunningCtl refresh({"--store", store_, "library", "refresh", "--json"});
    refresh.signalOnceRunning(SIGTERM);
    sqlite3_close(catalog);
    const CtlOutcome outcome = refresh.finish();
    EXPECT_EQ(outcome.status, 130);
    EXPECT_EQ(outcome.output, "");
    expectOneLine(outcome, "已停止");
    EXPECT_EQ(loadSettings(store_).pendingRefresh, true);
}

TEST_F(LibraryCommands, WritingIsRefusedWhileAnotherCommandWrites) {
    const SingleInstance command(store_, SingleInstance::Role::Command);
    ASSERT_TRUE(command.isFirst());
    const CtlOutcome refused = run({"library", "refresh"});
    EXPECT_EQ(refused.status, 1);
    expectOneLine(refused, "另一个 morvanectl");
}

TEST_F(LibraryCommands, WritingIsRefusedWhileAWindowHasTheStore) {
    makeMedia();
    runJson({"library", "add", media_});
    const SingleInstance window(store_);
    ASSERT_TRUE(window.isFirst());
    const CtlOutcome refused = run({"library", "refresh"});
    EXPECT_EQ(refused.status, 1);
    expectOneLine(refused, "正在使用");
    EXPECT_EQ(run({"search"}).status, 0);
    EXPECT_EQ(run({"library", "list"}).status, 0);
}

class WrongUsage : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(WrongUsage, EndsWith64AndOneLineBeforeAnythingIsTouched) {
    const TemporaryFolder folder;
    std::vector<std::string> arguments{"--store", folder / "store"};
    arguments.insert(arguments.end(), GetParam().begin(), GetParam().end());
    const CtlOutcome outcome = test::runCtl(arguments);
    EXPECT_EQ(outcome.status, 64);
    EXPECT_EQ(outcome.output, "");
    expectOneLine(outcome, "");
    EXPECT_THAT(test::listTree(folder.path()), IsEmpty());
}

using Arguments = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(
    Table, WrongUsage,
    testing::Values(Arguments{}, Arguments{"bogus"}, Arguments{"library"}, Arguments{"library", "add"},
                    Arguments{"library", "bogus"}, Arguments{"library", "list", "extra"},
                    Arguments{"library", "refresh", "--bogus"}, Arguments{"search", "--kind"},
                    Arguments{"categories", "extra"}, Arguments{"project"}, Arguments{"project", "plan"},
                    Arguments{"project", "plan", "--name", "n", "--into", "/tmp"},
                    Arguments{"project", "create", "--name", "n", "/tmp"}, Arguments{"project", "resume"},
                    Arguments{"project", "verify"}, Arguments{"probe"}));

TEST(WrongValues, EndWith64) {
    const TemporaryFolder folder;
    for (const Arguments& arguments :
         {Arguments{"search", "--kind", "movie"}, Arguments{"search", "--scope", ""},
          Arguments{"project", "plan", "--name", "n", "--into", "/tmp", "--size", "1920", "/tmp"},
          Arguments{"project", "plan", "--name", "n", "--into", "/tmp", "--frame-rate", "x", "/tmp"}}) {
        Arguments all{"--store", folder / "store"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const CtlOutcome outcome = test::runCtl(all);
        EXPECT_EQ(outcome.status, 64) << arguments.back();
        EXPECT_EQ(outcome.output, "");
    }
}

struct Refusal {
    Arguments arguments;
    std::string text;
};

class UsageTexts : public testing::TestWithParam<Refusal> {};

TEST_P(UsageTexts, AreInTheLanguageOfTheProduct) {
    const CtlOutcome outcome = test::runCtl(GetParam().arguments);
    EXPECT_EQ(outcome.status, 64);
    EXPECT_EQ(outcome.errors, "morvanectl: 参数有误：" + GetParam().text + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Table, UsageTexts,
    testing::Values(Refusal{{}, "没有给出命令，或没有这个命令；用 --help 查看用法。"},
                    Refusal{{"library", "bogus"}, "没有给出命令，或没有这个命令；用 --help 查看用法。"},
                    Refusal{{"library", "add"}, "缺少 DIR。"},
                    Refusal{{"project", "plan", "--name", "n", "/tmp"}, "缺少 --into。"},
                    Refusal{{"library", "list", "extra"}, "多余或不认识的参数：extra"},
                    Refusal{{"search", "--bogus"}, "多余或不认识的参数：--bogus"},
                    Refusal{{"search", "--kind"}, "--kind 后面缺少值。"},
                    Refusal{{"search", "--kind", "音频", "--kind", "视频"}, "--kind 只能给出一次。"},
                    Refusal{{"library", "list", "--json=x"}, "值无效：--json = x"},
                    Refusal{{"--store", "", "library", "list"}, "--store 不能为空。"}));

TEST(Help, ExistsOnEveryLevel) {
    for (const Arguments& arguments :
         {Arguments{"--help"}, Arguments{"library", "--help"}, Arguments{"library", "add", "--help"},
          Arguments{"search", "--help"}, Arguments{"categories", "-h"}, Arguments{"project", "--help"},
          Arguments{"project", "create", "--help"}, Arguments{"project", "verify", "--help"},
          Arguments{"probe", "--help"}}) {
        const CtlOutcome outcome = test::runCtl(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, HasSubstr("用法"));
        EXPECT_THAT(outcome.output, HasSubstr("\n选项:\n"));
        for (const char* english : {"Options", "Subcommands", "REQUIRED"})
            EXPECT_THAT(outcome.output, Not(HasSubstr(english)));
        EXPECT_EQ(outcome.errors, "");
    }
}

TEST(Version, IsTold) {
    EXPECT_EQ(test::runCtl({"--version"}).output, "morvanectl 1.2.0\n");
}

}  // namespace
}  // namespace morvane
