#include "project/safe_open.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <utility>

#include <gtest/gtest.h>

#include "project/project_errors.h"
#include "support/system_error.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

std::string openError(const std::string& path) {
    return errorOf([&] { openRead(fileLocation(path)); });
}

TEST(OpenRead, OpensARegularFile) {
    const Workplace place;
    writeFile(place.source("a/b/夜 01\xFF.mov"), "content");
    const UniqueFd file = openRead(fileLocation(place.source("a/b/夜 01\xFF.mov")));
    char bytes[16] = {};
    EXPECT_EQ(::read(file.get(), bytes, sizeof bytes), 7);
    EXPECT_STREQ(bytes, "content");
    EXPECT_NE(::fcntl(file.get(), F_GETFD) & FD_CLOEXEC, 0);
}

/// Reads from the file at `path` as `open` opens it, and looks at its access date.
void expectNoAccessDate(const std::string& path, const std::function<UniqueFd(const FileUrl&)>& open) {
    const timespec times[2] = {{1'000'000'000, 0}, {1'700'000'000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    {
        const UniqueFd file = open(fileLocation(path));
        char byte = 0;
        EXPECT_EQ(::read(file.get(), &byte, 1), 1);
    }
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_atim.tv_sec, 1'000'000'000);
}

TEST(OpenRead, LeavesNoAccessDate) {
    const Workplace place;
    writeFile(place.source("a.mov"), "content");
    expectNoAccessDate(place.source("a.mov"), openRead);
}

TEST(OpenRead, RefusesWithTheDescribedTexts) {
    const Workplace place;
    makeTree(place.source(""), {{"real/inner/a.mov", "a"}, {"folder/", ""}});
    std::filesystem::create_directory_symlink("real", place.source("linked"));
    std::filesystem::create_symlink("real/inner/a.mov", place.source("link.mov"));
    const std::string notFolder = systemErrorText(ENOTDIR);
    EXPECT_EQ(openError(""), project_text::emptySourcePath);
    EXPECT_EQ(openError("/"), project_text::emptySourcePath);
    EXPECT_EQ(errorOf([] { openRead(*parseUrl("https://example.com/a.mov")); }),
              project_text::emptySourcePath);
    EXPECT_EQ(openError(place.source("linked/inner/a.mov")),
              sentence(project_text::sourceParentPrefix, "linked（" + notFolder + "）"));
    EXPECT_EQ(openError(place.source("real/inner/a.mov/b.mov")),
              sentence(project_text::sourceParentPrefix, "a.mov（" + notFolder + "）"));
    EXPECT_EQ(openError(place.source("none\xFF/a.mov")),
              sentence(project_text::sourceParentPrefix, "none_（" + systemErrorText(ENOENT) + "）"));
    EXPECT_EQ(openError(place.source("link.mov")),
              sentence(project_text::cannotReadSourcePrefix, "link.mov"));
    EXPECT_EQ(openError(place.source("none.mov")),
              sentence(project_text::cannotReadSourcePrefix, "none.mov"));
    EXPECT_EQ(openError(place.source("folder")), project_text::sourceNotRegular);
    EXPECT_EQ(openError("/dev/null"), project_text::sourceNotRegular);
}

TEST(OpenRead, NeverWaitsForAPipeOrSocket) {
    const Workplace place;
    ASSERT_EQ(::mkfifo(place.source("pipe.mov").c_str(), 0600), 0);
    EXPECT_EQ(openError(place.source("pipe.mov")), project_text::sourceNotRegular);
    const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, place.source("s.mov").c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(openError(place.source("s.mov")), project_text::sourceNotRegular);
}

TEST(OpenRead, UnreadableForAnotherUser) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "another user id is needed, which only root can take";
    const Workplace place;
    makeTree(place.source(""), {{"shut/a.mov", "a"}, {"b.mov", "b"}});
    std::filesystem::permissions(place.path(""), std::filesystem::perms(0755));
    std::filesystem::permissions(place.source("shut"), std::filesystem::perms(0700));
    std::filesystem::permissions(place.source("b.mov"), std::filesystem::perms(0600));
    ASSERT_EQ(::seteuid(65534), 0);
    const std::string inShut = openError(place.source("shut/a.mov"));
    const std::string onFile = openError(place.source("b.mov"));
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(inShut, sentence(project_text::sourceParentPrefix, "shut（" + systemErrorText(EACCES) + "）"));
    EXPECT_EQ(onFile, sentence(project_text::cannotReadSourcePrefix, "b.mov"));
}

/// What opening `path` says right after another file of its folder was opened.
std::string nextOpenError(const std::string& opened, const std::string& path,
                          const std::function<void()>& between = {}) {
    SafeOpener opener;
    opener.openRead(fileLocation(opened));
    if (between)
        between();
    return errorOf([&] { opener.openRead(fileLocation(path)); });
}

TEST(SafeOpener, OpensOneFileAfterTheOther) {
    const Workplace place;
    makeTree(place.source(""), {{"a/1.mov", "first"}, {"a/2.mov", "second"}, {"b/3.mov", "third"}});
    SafeOpener opener;
    for (const auto& [name, content] : {std::pair{"a/1.mov", "first"}, std::pair{"a/2.mov", "second"},
                                        std::pair{"b/3.mov", "third"}, std::pair{"a/1.mov", "first"}}) {
        const UniqueFd file = opener.openRead(fileLocation(place.source(name)));
        char bytes[16] = {};
        EXPECT_GT(::read(file.get(), bytes, sizeof bytes), 0);
        EXPECT_STREQ(bytes, content);
        EXPECT_NE(::fcntl(file.get(), F_GETFD) & FD_CLOEXEC, 0);
    }
}

TEST(SafeOpener, LeavesNoAccessDate) {
    const Workplace place;
    makeTree(place.source(""), {{"a.mov", "a"}, {"b.mov", "b"}});
    SafeOpener opener;
    opener.openRead(fileLocation(place.source("a.mov")));
    expectNoAccessDate(place.source("b.mov"), [&](const FileUrl& url) { return opener.openRead(url); });
}

TEST(SafeOpener, RefusesWhatAppearsBetweenTwoFiles) {
    const Workplace place;
    makeTree(place.source(""), {{"top/in/a.mov", "a"}, {"top/in/folder/", ""}});
    const std::string opened = place.source("top/in/a.mov");
    std::filesystem::create_symlink("a.mov", place.source("top/in/link.mov"));
    ASSERT_EQ(::mkfifo(place.source("top/in/pipe.mov").c_str(), 0600), 0);
    EXPECT_EQ(nextOpenError(opened, place.source("top/in/link.mov")),
              sentence(project_text::cannotReadSourcePrefix, "link.mov"));
    EXPECT_EQ(nextOpenError(opened, place.source("top/in/none.mov")),
              sentence(project_text::cannotReadSourcePrefix, "none.mov"));
    EXPECT_EQ(nextOpenError(opened, place.source("top/in/pipe.mov")), project_text::sourceNotRegular);
    EXPECT_EQ(nextOpenError(opened, place.source("top/in/folder")), project_text::sourceNotRegular);
    const std::string notFolder = "（" + systemErrorText(ENOTDIR) + "）";
    EXPECT_EQ(nextOpenError(opened, opened,
                            [&] {
                                std::filesystem::rename(place.source("top"), place.source("moved"));
                                std::filesystem::create_directory_symlink("moved", place.source("top"));
                            }),
              sentence(project_text::sourceParentPrefix, "top" + notFolder));
}

TEST(OpenFolder, FollowsNoLink) {
    const Workplace place;
    makeTree(place.source(""), {{"real/inner/", ""}});
    std::filesystem::create_directory_symlink("real", place.source("linked"));
    EXPECT_TRUE(openFolder(place.source("real/inner")));
    EXPECT_FALSE(openFolder(place.source("linked/inner")));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_FALSE(openFolder(place.source("linked")));
    EXPECT_TRUE(openFolder("/"));
}

}  // namespace
}  // namespace morvane::test
