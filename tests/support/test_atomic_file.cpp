// Whole files: reading, and replacement in one step.
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>

#include "support/atomic_file.h"
#include "support/system_error.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using std::string;
using test::listTree;
using test::readAll;
using test::TemporaryFolder;
using test::writeFile;

// The errno value of the std::system_error that `work` throws; 0 when it throws nothing.
int errorOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.what(), systemErrorText(error.code().value()));
        return error.code().value();
    }
    return 0;
}

mode_t modeOf(const string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST(ReplaceFile, WritesANewFileWithItsMode) {
    const TemporaryFolder folder;
    const mode_t mask = ::umask(022);
    replaceFile(folder / "usual", "", Durability::Rename);
    replaceFile(folder / "private", string("a\0b", 3), Durability::RenameAndSync, 0600);
    ::umask(mask);
    EXPECT_EQ(readAll(folder / "usual"), "");
    EXPECT_EQ(readAll(folder / "private"), string("a\0b", 3));
    EXPECT_EQ(modeOf(folder / "usual"), 0644U);
    EXPECT_EQ(modeOf(folder / "private"), 0600U);
    EXPECT_EQ(listTree(folder.path()), (std::vector<string>{"private", "usual"}));
}

TEST(ReplaceFile, ReplacesLongByShort) {
    const TemporaryFolder folder;
    writeFile(folder / "file", string(1 << 20, 'x'));
    replaceFile(folder / "file", "short", Durability::Rename);
    EXPECT_EQ(readAll(folder / "file"), "short");
}

TEST(ReplaceFile, ALinkIsReplacedAndItsTargetUntouched) {
    const TemporaryFolder folder;
    writeFile(folder / "target", "target");
    ASSERT_EQ(::symlink("target", (folder / "link").c_str()), 0);
    replaceFile(folder / "link", "new", Durability::RenameAndSync);
    EXPECT_EQ(readAll(folder / "target"), "target");
    EXPECT_EQ(readAll(folder / "link"), "new");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(folder / "link")));
}

TEST(ReplaceFile, AReaderSeesOneContentOrTheOther) {
    const TemporaryFolder folder;
    const string path = folder / "file";
    const string first(50'000, 'a');
    const string second(70'000, 'b');
    replaceFile(path, first, Durability::Rename);
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int count = 0; count < 200; ++count)
            replaceFile(path, count % 2 == 0 ? second : first, Durability::Rename);
        done = true;
    });
    int other = 0;
    while (!done) {
        const string content = readFile(path);
        other += content != first && content != second ? 1 : 0;
    }
    writer.join();
    EXPECT_EQ(other, 0);
}

TEST(ReplaceFile, FailuresLeaveTheOldContentAndNothingElse) {
    const TemporaryFolder folder;
    // A folder in the target's place: the rename itself fails.
    test::makeTree(folder.path(), {{"taken/child", "kept"}});
    EXPECT_EQ(errorOf([&] { replaceFile(folder / "taken", "x", Durability::Rename); }), EISDIR);
    EXPECT_EQ(errorOf([&] { replaceFile(folder / "missing/file", "x", Durability::Rename); }), ENOENT);
    EXPECT_EQ(errorOf([&] { replaceFile(folder / string("nul\0byte", 8), "x", Durability::Rename); }),
              EINVAL);
    EXPECT_EQ(errorOf([&] { replaceFile("", "x", Durability::Rename); }), ENOENT);
    EXPECT_EQ(listTree(folder.path()), (std::vector<string>{"taken/", "taken/child"}));
}

TEST(ReplaceFile, AWriteThatFailsHalfWayLeavesTheOldContent) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "old");
    // The system refuses to let any file of this process grow beyond 4 KiB.
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{4096, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const int error = errorOf([&] { replaceFile(folder / "file", string(10'000, 'x'), Durability::Rename); });
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(error, EFBIG);
    EXPECT_EQ(readAll(folder / "file"), "old");
    EXPECT_EQ(listTree(folder.path()), std::vector<string>{"file"});
}

TEST(ReplaceFile, AFolderWithoutPermissionIsAnError) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0555), 0);
    // The super-user may write anywhere: act as nobody for the file system.
    const bool isRoot = ::geteuid() == 0;
    if (isRoot)
        ::setfsuid(65534);
    const int error = errorOf([&] { replaceFile(folder / "file", "new", Durability::Rename); });
    if (isRoot)
        ::setfsuid(0);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    EXPECT_EQ(error, EACCES);
    EXPECT_EQ(readAll(folder / "file"), "old");
}

TEST(ReadFile, GivesTheWholeContent) {
    const TemporaryFolder folder;
    const string content = string(200'000, 'x') + string("\0\xFF", 2);
    writeFile(folder / "big", content);
    writeFile(folder / "empty", "");
    EXPECT_EQ(readFile(folder / "big"), content);
    EXPECT_EQ(readFile(folder / "empty"), "");
    EXPECT_FALSE(readFile("/proc/self/status").empty());  // says it holds 0 bytes
    ASSERT_EQ(::symlink("big", (folder / "link").c_str()), 0);
    EXPECT_EQ(readFile(folder / "link"), content);
}

TEST(ReadFile, KeepsTheLimit) {
    const TemporaryFolder folder;
    writeFile(folder / "file", "12345");
    EXPECT_EQ(readFile(folder / "file", 5), "12345");
    EXPECT_EQ(errorOf([&] { readFile(folder / "file", 4); }), EFBIG);
    EXPECT_EQ(errorOf([&] { readFile("/proc/self/status", 10); }), EFBIG);
}

TEST(ReadFile, RefusesWhatIsNoFile) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(errorOf([&] { readFile(folder / "pipe"); }), EINVAL);
    EXPECT_EQ(errorOf([&] { readFile(folder.path()); }), EISDIR);
    EXPECT_EQ(errorOf([&] { readFile(folder / "missing"); }), ENOENT);
}

TEST(SystemError, TellsWhatTheSystemTells) {
    EXPECT_EQ(systemErrorText(ENOENT), "No such file or directory");
    EXPECT_FALSE(systemErrorText(123456).empty());
    errno = EACCES;
    EXPECT_EQ(errorOf([] { throwErrno(); }), EACCES);
}

}  // namespace
}  // namespace morvane
