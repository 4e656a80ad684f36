// Renames that never replace, free space, package types, data folders.
#include <fcntl.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/data_folder.h"
#include "platform/exclusive_rename.h"
#include "platform/package_types.h"
#include "platform/volume_space.h"
#include "support/unique_fd.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using std::string;
using test::listTree;
using test::makeTree;
using test::readAll;
using test::TemporaryFolder;

UniqueFd openFolder(const string& path) {
    return UniqueFd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

TEST(ExclusiveRename, MovesToAFreeName) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"a/one", "1"}, {"b/", ""}});
    const UniqueFd from = openFolder(folder / "a");
    const UniqueFd to = openFolder(folder / "b");
    EXPECT_EQ(renameExclusively(from.get(), "one", to.get(), "two"), 0);
    EXPECT_EQ(listTree(folder.path()), (std::vector<string>{"a/", "b/", "b/two"}));
    EXPECT_EQ(renameExclusively(folder / "b/two", folder / "a/空镜"), 0);
    EXPECT_EQ(readAll(folder / "a/空镜"), "1");
}

TEST(ExclusiveRename, NeverReplaces) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"one", "1"}, {"two", "2"}, {"full/x", ""}, {"empty/", ""}});
    ASSERT_EQ(::symlink("nowhere", (folder / "dangling").c_str()), 0);
    for (const char* taken : {"two", "full", "empty", "dangling", "one"})
        EXPECT_EQ(renameExclusively(folder / "one", folder / taken), EEXIST) << taken;
    EXPECT_EQ(readAll(folder / "one"), "1");
    EXPECT_EQ(readAll(folder / "two"), "2");
}

TEST(ExclusiveRename, TellsWhyItCannot) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"one", "1"}});
    EXPECT_EQ(renameExclusively(folder / "missing", folder / "x"), ENOENT);
    EXPECT_EQ(renameExclusively(folder / "one", folder / "missing/x"), ENOENT);
    EXPECT_EQ(renameExclusively(folder / "one", "/proc/x"), EXDEV);
    EXPECT_EQ(renameExclusively(folder / "one", folder / string(300, 'n')), ENAMETOOLONG);
}

TEST(ExchangeNames, SwapsTwoFiles) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"one", "1"}, {"two", "2"}});
    const UniqueFd descriptor = openFolder(folder.path());
    EXPECT_EQ(exchangeNames(descriptor.get(), "one", "two"), 0);
    EXPECT_EQ(readAll(folder / "one"), "2");
    EXPECT_EQ(readAll(folder / "two"), "1");
    EXPECT_EQ(exchangeNames(descriptor.get(), "one", "missing"), ENOENT);
    EXPECT_EQ(readAll(folder / "one"), "2");
}

TEST(VolumeSpace, CountsWhatTheSystemCounts) {
    const TemporaryFolder folder;
    struct statfs volume {};
    ASSERT_EQ(::statfs(folder.path().c_str(), &volume), 0);
    const auto available = availableBytes(folder.path());
    ASSERT_TRUE(available.has_value());
    // Other programs write meanwhile: a part in a hundred of the volume is near enough.
    const double expected = static_cast<double>(volume.f_bavail) * static_cast<double>(volume.f_frsize);
    const double whole = static_cast<double>(volume.f_blocks) * static_cast<double>(volume.f_frsize);
    EXPECT_NEAR(static_cast<double>(*available), expected, whole / 100);
}

TEST(VolumeSpace, SaysNothingWhereThereIsNone) {
    EXPECT_FALSE(availableBytes("/proc").has_value());
    EXPECT_FALSE(availableBytes("/does/not/exist").has_value());
}

TEST(PackageTypes, AnyCaseAndOnlyTheExtension) {
    for (const char* name :
         {"Film.fcpbundle", "FILM.FCPBUNDLE", "x.app", "Bilder.photoslibrary", "a.b.xcodeproj", "p.prefPane",
          "s.dSYM", "vst.vst3", "k.key", "s.sparsebundle", "t.tvlibrary"})
        EXPECT_TRUE(hasPackageExtension(name)) << name;
    for (const char* name :
         {"", "app", ".app", "x.app.zip", "x.apps", "x.", "DCIM", "x.mov", "素材.包", "x.ap"})
        EXPECT_FALSE(hasPackageExtension(name)) << name;
}

TEST(PackageTypes, HoldsEveryTypeTheWalkMustPassOver) {
    for (const char* extension :
         {"app",           "bundle",        "framework", "plugin",       "kext",      "fcpbundle",
          "photoslibrary", "imovielibrary", "tvlibrary", "musiclibrary", "aplibrary", "logicx",
          "band",          "dvdmedia",      "rtfd",      "pages",        "numbers",   "key",
          "xcodeproj",     "playground",    "prefPane",  "sparsebundle"})
        EXPECT_TRUE(hasPackageExtension(string("x.") + extension)) << extension;
}

// The environment of one test, put back at the end.
class DataFolder : public testing::Test {
protected:
    void TearDown() override {
        for (const auto& [name, value] : before_) {
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }
    void set(const char* name, const char* value) {
        const char* old = std::getenv(name);
        before_.emplace_back(name, old != nullptr ? std::optional<string>(old) : std::nullopt);
        if (value != nullptr)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }

private:
    std::vector<std::pair<string, std::optional<string>>> before_;
};

TEST_F(DataFolder, FollowsTheBaseDirectoryRules) {
    set("XDG_DATA_HOME", "/data/./home/");
    set("HOME", "/home/user");
    EXPECT_EQ(userDataFolder(), "/data/home");
    set("XDG_DATA_HOME", "relative/ignored");
    EXPECT_EQ(userDataFolder(), "/home/user/.local/share");
    set("XDG_DATA_HOME", "");
    EXPECT_EQ(userDataFolder(), "/home/user/.local/share");
    set("XDG_DATA_HOME", nullptr);
    EXPECT_EQ(userDataFolder(), "/home/user/.local/share");
}

TEST_F(DataFolder, AsksTheUserDatabaseWithoutHome) {
    set("XDG_DATA_HOME", nullptr);
    set("HOME", nullptr);
    EXPECT_TRUE(userDataFolder().starts_with('/'));
    EXPECT_TRUE(userDataFolder().ends_with("/.local/share"));
}

TEST_F(DataFolder, SharedFoldersInOrder) {
    set("XDG_DATA_DIRS", "/one/:relative::/two");
    EXPECT_EQ(sharedDataFolders(), (std::vector<string>{"/one", "/two"}));
    set("XDG_DATA_DIRS", nullptr);
    EXPECT_EQ(sharedDataFolders(), (std::vector<string>{"/usr/local/share", "/usr/share"}));
    set("XDG_DATA_DIRS", "");
    EXPECT_EQ(sharedDataFolders(), (std::vector<string>{"/usr/local/share", "/usr/share"}));
}

}  // namespace
}  // namespace morvane
