#include "organizer_ui/folder_listing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::vector<std::string> names(const FolderListing& listing) {
    std::vector<std::string> result;
    for (const FolderEntry& entry : listing.entries)
        result.push_back(entry.name);
    return result;
}

FolderListing list(const std::string& path) {
    const std::atomic<bool> cancelled = false;
    return listFolder(path, cancelled);
}

TEST(ListFolder, PutsFoldersFirstInTheBrowsersOrder) {
    const test::TemporaryFolder folder;
    test::makeTree(folder.path(), {{"Take 10.wav", "1234"},
                                   {"take 2.wav", ""},
                                   {"z/", ""},
                                   {"B 10/", ""},
                                   {"b 9/", ""},
                                   {".hidden", ""}});
    ASSERT_EQ(::symlink("nowhere", (folder / "broken").c_str()), 0);
    ASSERT_EQ(::symlink("z", (folder / "a link").c_str()), 0);
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    test::setModified(folder / "Take 10.wav", 1'700'000'000);
    const FolderListing listing = list(folder.path() + "/./");
    EXPECT_EQ(listing.path, folder.path());
    EXPECT_EQ(listing.error, "");
    EXPECT_THAT(names(listing), ElementsAre("a link", "b 9", "B 10", "z", "take 2.wav", "Take 10.wav"));
    EXPECT_EQ(listing.entries.back(), (FolderEntry{"Take 10.wav", false, 4, 1'700'000'000}));
    EXPECT_TRUE(listing.entries.front().isFolder);
}

TEST(ListFolder, OfAFileShowsItsFolderWithTheFileSelected) {
    const test::TemporaryFolder folder;
    test::makeTree(folder.path(), {{"a.mov", "x"}});
    const FolderListing listing = list(folder / "a.mov");
    EXPECT_EQ(listing.path, folder.path());
    EXPECT_EQ(listing.select, "a.mov");
    EXPECT_THAT(names(listing), ElementsAre("a.mov"));
}

TEST(ListFolder, SaysWhatIsWrong) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(list(folder / "none").error, "找不到此位置：" + (folder / "none"));
    EXPECT_THAT(list(folder / "none").entries, IsEmpty());
}

TEST(ListFolder, EndsEarlyWhenNobodyWaits) {
    const test::TemporaryFolder folder;
    test::makeTree(folder.path(), {{"a", ""}, {"b", ""}});
    const std::atomic<bool> cancelled = true;
    EXPECT_THAT(names(listFolder(folder.path(), cancelled)), IsEmpty());
}

TEST(MakeFolder, MakesOneAndExplainsRefusals) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(makeFolder(folder.path(), "拍摄"), "");
    EXPECT_THAT(test::listTree(folder.path()), ElementsAre("拍摄/"));
    EXPECT_EQ(makeFolder(folder.path(), "拍摄"), "已存在同名项目。");
    for (const char* name : {"", ".", "..", "a/b"})
        EXPECT_EQ(makeFolder(folder.path(), name), "文件夹名称无效。") << name;
    EXPECT_THAT(makeFolder(folder / "none", "x"), StartsWith("无法新建文件夹："));
}

TEST(MountedDrives, AreThoseAPersonAttached) {
    const std::string table =
        "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
        "30 22 0:26 / /proc rw - proc proc rw\n"
        "40 22 8:17 / /run/media/lin/A7S3\\040CARD\\01101 rw,nosuid - exfat /dev/sdb1 rw\n"
        "41 22 8:33 / /media/lin/影像素材A rw - ntfs3 /dev/sdc1 rw\n"
        "42 22 0:50 / /mnt rw - nfs nas:/x rw\n"
        "43 22 0:51 / /mntx rw - tmpfs tmpfs rw\n"
        "short line\n";
    EXPECT_THAT(mountedDrives(table), ElementsAre(Place{"A7S3 CARD\x09"
                                                        "01",
                                                        "/run/media/lin/A7S3 CARD\x09"
                                                        "01",
                                                        "externaldrive"},
                                                  Place{"影像素材A", "/media/lin/影像素材A", "externaldrive"},
                                                  Place{"mnt", "/mnt", "externaldrive"}));
    EXPECT_THAT(mountedDrives(""), IsEmpty());
}

TEST(KnownPlaces, BeginAtHomeAndEndAtTheRoot) {
    const std::vector<Place> places = knownPlaces();
    ASSERT_GE(places.size(), 2u);
    EXPECT_EQ(places.front().title, "个人文件夹");
    EXPECT_EQ(places.back(), (Place{"文件系统", "/", "externaldrive"}));
}

}  // namespace
}  // namespace morvane
