#include "catalog/library_scan.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/catalog/catalog_fixture.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using namespace morvane::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

class Scan : public testing::Test {
protected:
    ScanResult scan(const std::vector<std::string>& roots, const SharedAssets& previous = nullptr) const {
        ScanRequest request;
        request.roots = roots;
        request.previous = previous;
        return scanLibrary(request);
    }
    std::vector<std::string> relatives() const { return relativesOf(*scan({root()}).assets); }
    const std::string& root() const { return folder_.path(); }

    TemporaryFolder folder_;
};

TEST_F(Scan, FindsMediaFilesOnlyWithSizeAndTime) {
    makeTree(
        root(),
        {{"a/clip.MOV", "12345"}, {"a/notes.txt", "x"}, {"README", "x"}, {"look.cube", ""}, {"empty/", ""}});
    setModified(folder_ / "a/clip.MOV", 1700000000.5);
    setModified(folder_ / "look.cube", -10.25);
    const ScanResult result = scan({root()});
    EXPECT_EQ(result.unreadable, 0U);
    EXPECT_THAT(result.offline, IsEmpty());
    ASSERT_THAT(relativesOf(*result.assets), ElementsAre("a/clip.MOV", "look.cube"));
    const AssetView clip = result.assets->at(0);
    EXPECT_EQ(clip.path, folder_ / "a/clip.MOV");
    EXPECT_EQ(clip.root, root());
    EXPECT_EQ(clip.size, 5);
    EXPECT_EQ(clip.modified, 1700000000.5);
    EXPECT_EQ(result.assets->at(1).modified, -10.25);
    EXPECT_EQ(result.assets->at(1).size, 0);
}

TEST_F(Scan, PassesOverHiddenEntriesPackagesAndLinks) {
    makeTree(root(), {{".DS_Store", ""},
                      {".hidden.mov", ""},
                      {".cache/inside.mov", ""},
                      {"Photos.photoslibrary/originals/1.jpg", ""},
                      {"Cut.FCPBUNDLE/a.mov", ""},
                      {"real/1.mov", ""}});
    fs::create_symlink(folder_ / "real/1.mov", folder_ / "link.mov");
    fs::create_directory_symlink(folder_ / "real", folder_ / "linked folder");
    fs::create_symlink(folder_ / "absent.mov", folder_ / "dangling.mov");
    fs::create_directory_symlink(root(), folder_ / "loop");
    EXPECT_THAT(relatives(), ElementsAre("real/1.mov"));
    EXPECT_EQ(scan({root()}).unreadable, 0U);
}

TEST_F(Scan, OnlyRegularFilesAreIndexed) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe.mov").c_str(), 0600), 0);
    fs::create_directory(folder_ / "folder.mov");
    writeFile(folder_ / "folder.mov/inside.mov", "");
    EXPECT_THAT(relatives(), ElementsAre("folder.mov/inside.mov"));
}

TEST_F(Scan, APackageOrHiddenFolderTheUserNamedIsWalked) {
    makeTree(root(), {{".library/1.mov", ""}, {"Cut.fcpbundle/2.mov", ""}});
    EXPECT_THAT(pathsOf(*scan({folder_ / ".library", folder_ / "Cut.fcpbundle"}).assets),
                ElementsAre(folder_ / ".library/1.mov", folder_ / "Cut.fcpbundle/2.mov"));
}

TEST_F(Scan, ANamedFolderMayBeALink) {
    writeFile(folder_ / "real/1.mov", "");
    fs::create_directory_symlink(folder_ / "real", folder_ / "link");
    EXPECT_THAT(pathsOf(*scan({folder_ / "link"}).assets), ElementsAre(folder_ / "link/1.mov"));
}

TEST_F(Scan, SortsAsAFileBrowser) {
    makeTree(root(), {{"z/Take 10.wav", ""},
                      {"a/Take 2.wav", ""},
                      {"m/take 1.wav", ""},
                      {"b/Take 2.wav", ""},
                      {"a b/Take 2.wav", ""}});
    EXPECT_THAT(relatives(), ElementsAre("m/take 1.wav", "a/Take 2.wav", "a b/Take 2.wav", "b/Take 2.wav",
                                         "z/Take 10.wav"));
}

TEST_F(Scan, NamesOfEveryKindAreKept) {
    for (const char* name :
         {"100%_\\.mov", "\"q\" 'q'.mov", "line\nbreak.mov", "🎬.mov", "Cafe\u0301.mov", "한국.mov"})
        writeFile(folder_ / name, "");
    EXPECT_THAT(relatives(), UnorderedElementsAre("100%_\\.mov", "\"q\" 'q'.mov", "line\nbreak.mov", "🎬.mov",
                                                  "Cafe\u0301.mov", "한국.mov"));
}

TEST_F(Scan, EntriesThatAreNoUtf8ArePassedOverAndCounted) {
    makeTree(root(),
             {{"good.mov", ""}, {"bad \xFF.mov", ""}, {"bad \xC3", ""}, {"folder \xE9/inside.mov", ""}});
    const ScanResult result = scan({root()});
    EXPECT_THAT(relativesOf(*result.assets), ElementsAre("good.mov"));
    EXPECT_EQ(result.unreadable, 2U) << "the media file and the folder; other files are none of ours";
    const ScanResult named = scan({folder_ / "folder \xE9"});
    EXPECT_EQ(named.assets->size(), 0U);
    EXPECT_EQ(named.unreadable, 1U);
}

TEST_F(Scan, CountsWhatCannotBeReadAndGoesOn) {
    makeTree(root(), {{"open/1.mov", ""}, {"closed/2.mov", ""}, {"listed only/3.mov", ""}});
    fs::permissions(root(), fs::perms(0755));
    fs::permissions(folder_ / "closed", fs::perms(0700));
    fs::permissions(folder_ / "listed only", fs::perms(0744));
    const OrdinaryUser user;
    if (::access((folder_ / "closed").c_str(), R_OK) == 0 && ::geteuid() != 0)
        GTEST_SKIP() << "the files belong to the user who runs the test";
    const ScanResult result = scan({root(), folder_ / "closed"});
    EXPECT_THAT(relativesOf(*result.assets), ElementsAre("open/1.mov"));
    EXPECT_EQ(result.unreadable, 3U) << "closed twice, and the folder that only shows its names";
    EXPECT_THAT(result.offline, IsEmpty());
}

TEST_F(Scan, AFolderThatOnlyShowsItsNamesCountsOnce) {
    makeTree(root(), {{"a/1.mov", ""}, {"a/2.mov", ""}, {"a/3.wav", ""}, {"b/4.mov", ""}, {"b/5.mov", ""}});
    writeFile(folder_ / "b/bad \xFF.mov", "");
    fs::permissions(root(), fs::perms(0755));
    for (const char* folder : {"a", "b"})
        fs::permissions(folder_ / folder, fs::perms(0444));
    ScanResult result;
    {
        const OrdinaryUser user;
        result = scan({root()});
    }
    for (const char* folder : {"a", "b"})
        fs::permissions(folder_ / folder, fs::perms(0755));
    EXPECT_EQ(result.assets->size(), 0U);
    EXPECT_EQ(result.unreadable, 3U) << "each folder, and the name that is no UTF-8";
}

TEST_F(Scan, RowsKeptAfterwardsStandWhereTheWalkWouldHavePutThem) {
    writeFile(folder_ / "here/same.mov", "");
    writeFile(folder_ / "here/2.mov", "");
    const std::vector<std::string> roots = {"/gone/first", folder_ / "here", "/gone/last"};
    const SharedAssets previous =
        listOf({assetBelow("/gone/last", "same.mov"), assetBelow("/gone/first", "same.mov"),
                assetBelow("/gone/first", "1.mov"), assetBelow(folder_ / "here", "deleted.mov")});
    const ScanResult late = scan(roots, listOf({assetBelow("/gone/last", "outdated.mov")}));
    EXPECT_EQ(late.offlineRoots, (std::vector<std::string>{"/gone/first", "/gone/last"}));
    const std::vector<std::string> wanted = pathsOf(*scan(roots, previous).assets);
    EXPECT_THAT(wanted, ElementsAre("/gone/first/1.mov", folder_ / "here/2.mov", "/gone/first/same.mov",
                                    folder_ / "here/same.mov", "/gone/last/same.mov"));
    EXPECT_EQ(pathsOf(*withKeptRows(late, roots, *previous)), wanted);
}

TEST_F(Scan, AFileNamedAsALibraryFolderIsCounted) {
    writeFile(folder_ / "1.mov", "");
    const ScanResult result = scan({folder_ / "1.mov"});
    EXPECT_EQ(result.assets->size(), 0U);
    EXPECT_EQ(result.unreadable, 1U);
}

TEST_F(Scan, AnOfflineFolderKeepsItsAssets) {
    writeFile(folder_ / "here/1.mov", "");
    const std::string gone = folder_ / "gone";
    const SharedAssets previous = listOf({assetBelow(gone, "b.mov"), assetBelow(folder_ / "here", "left.mov"),
                                          assetBelow(gone, "x/a.mov"), assetBelow(gone + "2", "c.mov")});
    const ScanResult result = scan({gone, folder_ / "here", "/nowhere/Drive 雨/"}, previous);
    EXPECT_THAT(pathsOf(*result.assets),
                ElementsAre(folder_ / "here/1.mov", gone + "/x/a.mov", gone + "/b.mov"));
    EXPECT_EQ(result.assets->at(1).root, gone);
    EXPECT_EQ(result.assets->at(1).size, 100);
    EXPECT_THAT(result.offline, ElementsAre("gone", "Drive 雨"));
    EXPECT_EQ(result.unreadable, 0U);
    EXPECT_EQ(scan({gone}).assets->size(), 0U);
}

TEST_F(Scan, WhatAnOfflineFolderKeepsCountsAsFound) {
    std::vector<Asset> kept;
    for (int number = 0; number < 3999; ++number)
        kept.push_back(assetBelow("/gone", std::to_string(number) + ".mov"));
    writeFile(folder_ / "1.mov", "");
    ScanRequest request;
    request.roots = {"/gone", root(), "/gone"};
    request.previous = listOf(kept);
    std::vector<std::size_t> told;
    request.progress = [&told](std::size_t found) { told.push_back(found); };
    EXPECT_EQ(scanLibrary(request).assets->size(), 4000U);
    EXPECT_THAT(told, ElementsAre(2000U, 4000U));
}

TEST_F(Scan, ATextThatIsNoAbsolutePathIsOffline) {
    EXPECT_THAT(scan({"", "relative", std::string("/tmp\0x", 6)}).offline, testing::SizeIs(3));
}

TEST_F(Scan, AFileSeenThroughTwoFoldersCountsUnderTheFirst) {
    makeTree(root(), {{"1.mov", ""}, {"sub/2.mov", ""}, {"sub/.hidden/3.mov", ""}});
    const ScanResult outerFirst = scan({root(), folder_ / "sub", root()});
    EXPECT_THAT(relativesOf(*outerFirst.assets), ElementsAre("1.mov", "sub/2.mov"));
    const ScanResult innerFirst = scan({folder_ / "sub", root()});
    EXPECT_THAT(relativesOf(*innerFirst.assets), ElementsAre("1.mov", "2.mov"));
    EXPECT_EQ(innerFirst.assets->at(1).root, folder_ / "sub");
    const ScanResult hiddenToo = scan({root(), folder_ / "sub/.hidden"});
    EXPECT_THAT(relativesOf(*hiddenToo.assets), ElementsAre("1.mov", "sub/2.mov", "3.mov"));
    EXPECT_THAT(relativesOf(*scan({root() + "/./sub/..", root()}).assets), testing::SizeIs(2));
}

TEST_F(Scan, VeryDeepTreesAreWalkedAsFarAsPathsReach) {
    std::string path = root();
    for (int depth = 0; depth < 300; ++depth)
        path += "/deep folder";
    ASSERT_LT(path.size(), 4096U);
    writeFile(path + "/1.mov", "");
    EXPECT_THAT(relatives(), testing::SizeIs(1));
}

TEST_F(Scan, AFolderMountedInsideItselfIsCountedNotFollowed) {
    makeTree(root(), {{"1.mov", ""}, {"a/2.mov", ""}, {"a/inside/", ""}});
    bool mounted = false;
    ScanResult result;
    std::thread([&] {  // mounts stay with this thread and the threads of its scan
        mounted = ::unshare(CLONE_NEWNS) == 0 &&
                  ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                  ::mount(root().c_str(), (folder_ / "a/inside").c_str(), nullptr, MS_BIND, nullptr) == 0;
        if (mounted)
            result = scan({root()});
    })
        .join();
    if (!mounted)
        GTEST_SKIP() << "this user may not mount";
    EXPECT_THAT(relativesOf(*result.assets), ElementsAre("1.mov", "a/2.mov"));
    EXPECT_EQ(result.unreadable, 1U);
}

TEST_F(Scan, TellsEveryTwoThousandFilesInOrder) {
    for (int number = 0; number < 4500; ++number)
        writeFile(folder_ / ("d" + std::to_string(number % 50) + "/" + std::to_string(number) + ".mov"), "");
    std::mutex mutex;
    std::vector<std::size_t> told;
    ScanRequest request;
    request.roots = {root(), folder_ / "d1"};
    request.progress = [&](std::size_t found) {
        const std::lock_guard lock(mutex);
        told.push_back(found);
    };
    EXPECT_EQ(scanLibrary(request).assets->size(), 4500U);
    EXPECT_THAT(told, ElementsAre(2000U, 4000U)) << "a folder seen again does not count again";
}

TEST_F(Scan, DoesNotDependOnTheThreads) {
    for (int number = 0; number < 600; ++number)
        writeFile(
            folder_ / ("d" + std::to_string(number % 60) + "/clip " + std::to_string(number / 60) + ".mov"),
            "");
    const std::vector<std::string> first = relatives();
    ASSERT_EQ(first.size(), 600U);
    for (int run = 0; run < 5; ++run)
        EXPECT_EQ(relatives(), first);
}

TEST_F(Scan, StopsWhenAsked) {
    for (int number = 0; number < 3000; ++number)
        writeFile(folder_ / ("d" + std::to_string(number % 300) + "/" + std::to_string(number) + ".mov"), "");
    std::stop_source stop;
    ScanRequest request;
    request.roots = {root(), folder_ / "d1"};
    request.stop = stop.get_token();
    request.progress = [&stop](std::size_t) { stop.request_stop(); };
    EXPECT_THROW(scanLibrary(request), ScanStopped);
    stop.request_stop();
    EXPECT_THROW(scanLibrary(request), ScanStopped);
}

TEST_F(Scan, AnEmptyLibraryGivesAnEmptyList) {
    const ScanResult result = scan({});
    EXPECT_EQ(result.assets->size(), 0U);
    EXPECT_EQ(scan({root()}).assets->size(), 0U);
}

// --- relative

struct DropCase {
    std::string path;
    std::string root;
    std::string relative;
};

class RelativePath : public testing::TestWithParam<DropCase> {};

TEST_P(RelativePath, IsAPlainDropOfCharacters) {
    EXPECT_EQ(relativePath(GetParam().path, GetParam().root), GetParam().relative);
}

INSTANTIATE_TEST_SUITE_P(
    Roots, RelativePath,
    testing::Values(DropCase{"/Volumes/Media/a/b.mov", "/Volumes/Media", "a/b.mov"},
                    DropCase{"/Volumes/Media/a/b.mov", "/Volumes/Media/", "/b.mov"},
                    DropCase{"/Volumes/Media/雨夜.mov", "/Volumes/Media/", "夜.mov"},
                    DropCase{"/素材 É/e\u0301t.mov", "/素材 É", "e\u0301t.mov"},
                    DropCase{"/素材/e\u0301t.mov", "/素材/", "t.mov"},
                    DropCase{"/r/👨‍👩‍👧x.mov", "/r/", "x.mov"},
                    DropCase{"/r/\u0301x.mov", "/r", "x.mov"},  // the mark belongs to the "/"
                    DropCase{"/a.mov", "/", ".mov"}, DropCase{"/a.mov", "/longer/than/it", ""}));

TEST_F(Scan, ARootStoredWithASlashLosesTheFirstCharacter) {
    makeTree(root(), {{"abc/1.mov", ""}, {"雨夜.mov", ""}, {"ビデオ/2.mov", ""}, {"e\u0301t.mov", ""}});
    EXPECT_THAT(relativesOf(*scan({root() + "/"}).assets),
                UnorderedElementsAre("bc/1.mov", "夜.mov", "デオ/2.mov", "t.mov"));
    EXPECT_THAT(relatives(), UnorderedElementsAre("abc/1.mov", "雨夜.mov", "ビデオ/2.mov", "e\u0301t.mov"));
}

TEST_F(Scan, RelativeIsThePlainDropForEveryFile) {
    makeTree(root(),
             {{"\u0301mark/1.mov", ""}, {"\u0301.mov", ""}, {"ビデオ/夜/2.mov", ""}, {"a/3.mov", ""}});
    for (const std::string& stored :
         {root(), root() + "/", root() + "/../" + fs::path(root()).filename().string()}) {
        const ScanResult result = scan({stored});
        ASSERT_EQ(result.assets->size(), 4U);
        for (std::size_t row = 0; row < 4; ++row)
            EXPECT_EQ(result.assets->at(row).relative, relativePath(result.assets->path(row), stored));
    }
}

// --- texts

TEST(ScanTexts, TellCountsGrouped) {
    EXPECT_EQ(scanProgressText(12000), "正在建立索引…已找到 12,000 个素材");
    EXPECT_EQ(loadSummaryText(2, 12486, CatalogState::Normal), "2 个素材文件夹 · 12,486 个素材");
    EXPECT_EQ(loadSummaryText(0, 0, CatalogState::Recovery),
              "0 个素材文件夹 · 0 个素材 · 索引恢复模式，旧副本已保留");
}

TEST(ScanTexts, SummariseARefresh) {
    ScanResult result;
    result.assets = listOf({assetBelow("/r", "1.mov")});
    EXPECT_EQ(scanSummaryText(1, result, ""), "1 个素材文件夹 · 1 个素材");
    result.unreadable = 1234;
    EXPECT_EQ(scanSummaryText(1, result, " · 通知"),
              "1 个素材文件夹 · 1 个素材 · 1234 个目录无法读取 · 通知");
    result.offline = {"甲", "B"};
    EXPECT_EQ(scanSummaryText(1, result, " · 通知"),
              "离线：甲、B · 已保留索引，连接硬盘后刷新 · 1234 个目录无法读取 · 通知");
    result.unreadable = 0;
    result.offline = {"甲"};
    EXPECT_EQ(scanSummaryText(3, result, ""), "离线：甲 · 已保留索引，连接硬盘后刷新");
}

}  // namespace
}  // namespace morvane
