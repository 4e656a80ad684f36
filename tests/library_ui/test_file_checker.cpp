#include "library_ui/file_checker.h"

#include "catalog/asset.h"
#include "tests/test_support.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <optional>

extern char** environ;

namespace morvane::test {
namespace {

using Paths = std::vector<std::string>;

/// A folder seen through a file system of its own process, which can be stopped: a drive that does not
/// answer.
class StoppableDrive {
public:
    explicit StoppableDrive(const std::string& source, std::string mountPoint)
        : mountPoint_(std::move(mountPoint)) {
        std::filesystem::create_directories(mountPoint_);
        const char* arguments[] = {"bindfs", "-f", source.c_str(), mountPoint_.c_str(), nullptr};
        if (::posix_spawnp(&process_, "bindfs", nullptr, nullptr, const_cast<char**>(arguments), environ) !=
            0) {
            process_ = -1;
            return;
        }
        mounted_ =
            waitUntil([&] { return std::filesystem::exists(mountPoint_ + "/here.mov") || hasEnded(); }, 10) &&
            !hasEnded();
    }
    ~StoppableDrive() {
        if (process_ <= 0 || ended_)
            return;
        ::kill(process_, SIGCONT);
        ::kill(process_, SIGTERM);
        ::waitpid(process_, nullptr, 0);
    }
    bool mounted() const { return mounted_; }
    void stop() const { ::kill(process_, SIGSTOP); }
    void goOn() const { ::kill(process_, SIGCONT); }

private:
    bool hasEnded() {
        ended_ = ended_ || ::waitpid(process_, nullptr, WNOHANG) != 0;
        return ended_;
    }
    const std::string mountPoint_;
    pid_t process_ = -1;
    bool ended_ = false;
    bool mounted_ = false;
};

Paths existing(FileChecker& checker, std::vector<FileRef> files) {
    std::optional<Paths> answer;
    checker.findExisting(std::move(files), &checker, [&](Paths found) { answer = std::move(found); });
    EXPECT_FALSE(answer.has_value()) << "never from inside the call";
    EXPECT_TRUE(waitUntil([&] { return answer.has_value(); }));
    return answer.value_or(Paths{});
}

TEST(FileChecker, FindsWhatExistsInTheOrderAsked) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"a/1.mov", "x"}, {"b/2.mov", "x"}, {"a/3.mov", "x"}});
    FileChecker checker;
    EXPECT_EQ(existing(checker, {{folder / "b/2.mov", folder / "b"},
                                 {folder / "a/gone.mov", folder / "a"},
                                 {folder / "a/3.mov", folder / "a"},
                                 {folder / "a/1.mov", folder / "a"}}),
              (Paths{folder / "b/2.mov", folder / "a/3.mov", folder / "a/1.mov"}));
    EXPECT_EQ(existing(checker, {}), Paths{});
}

TEST(FileChecker, TheNewestShownFileAloneIsAnswered) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"1.mov", "x"}});
    FileChecker checker;
    std::vector<bool> answers;
    const auto ask = [&](const std::string& name) {
        checker.checkShown({.path = folder / name, .root = folder.path(), .relative = name},
                           [&](bool exists) { answers.push_back(exists); });
    };
    ask("gone.mov");
    ask("gone.mov");
    ask("1.mov");
    ASSERT_TRUE(waitUntil([&] { return !answers.empty(); }));
    existing(checker, {{folder / "1.mov", folder.path()}});
    EXPECT_EQ(answers, (std::vector<bool>{true}));
    ask("1.mov");
    checker.forgetShown();
    existing(checker, {{folder / "1.mov", folder.path()}});
    existing(checker, {{folder / "1.mov", folder.path()}});
    EXPECT_EQ(answers.size(), 1U);
}

TEST(FileChecker, NothingComesOnceTheOwnerIsGone) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"1.mov", "x"}});
    FileChecker checker;
    bool answered = false;
    auto owner = std::make_unique<QObject>();
    checker.findExisting({{folder / "1.mov", folder.path()}}, owner.get(),
                         [&](const Paths&) { answered = true; });
    owner.reset();
    existing(checker, {{folder / "1.mov", folder.path()}});
    EXPECT_FALSE(answered);
}

TEST(FileChecker, ASilentDriveCountsAsMissingAndDelaysNobodyElse) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"source/here.mov", "x"}, {"other/1.mov", "x"}});
    const StoppableDrive drive(folder / "source", folder / "drive");
    if (!drive.mounted())
        GTEST_SKIP() << "no file system in user space can be mounted here (bindfs or /dev/fuse is missing)";
    auto checker = std::make_unique<FileChecker>();
    const FileRef onDrive{folder / "drive/here.mov", folder / "drive"};
    EXPECT_EQ(existing(*checker, {onDrive}), Paths{onDrive.path});
    drive.stop();
    // The kernel remembers what it was told a moment ago: ask for names it has not seen.
    QElapsedTimer time;
    time.start();
    bool driveAnswered = false;
    checker->findExisting(
        {{folder / "drive/new1.mov", onDrive.root}, {folder / "other/1.mov", folder / "other"}},
        checker.get(), [&](const Paths& found) {
            driveAnswered = true;
            EXPECT_EQ(found, Paths{folder / "other/1.mov"});
        });
    EXPECT_EQ(existing(*checker, {{folder / "other/1.mov", folder / "other"}}).size(), 1U);
    EXPECT_FALSE(driveAnswered) << "another folder's answer does not wait for the silent drive";
    ASSERT_TRUE(waitUntil([&] { return driveAnswered; }));
    EXPECT_GE(time.elapsed(), FileChecker::answerDeadline);

    time.restart();
    EXPECT_TRUE(existing(*checker, {{folder / "drive/new2.mov", onDrive.root}}).empty());
    EXPECT_LT(time.elapsed(), FileChecker::answerDeadline)
        << "a drive known to be silent is not waited for again";

    time.restart();
    checker.reset();
    EXPECT_LT(time.elapsed(), 1000) << "quitting does not wait for the drive";
    drive.goOn();
}

TEST(FileChecker, ADriveThatComesBackAnswersAgain) {
    const TemporaryFolder folder;
    makeTree(folder.path(), {{"source/here.mov", "x"}, {"source/later.mov", "x"}});
    const StoppableDrive drive(folder / "source", folder / "drive");
    if (!drive.mounted())
        GTEST_SKIP() << "no file system in user space can be mounted here (bindfs or /dev/fuse is missing)";
    FileChecker checker;
    drive.stop();
    EXPECT_TRUE(existing(checker, {{folder / "drive/later.mov", folder / "drive"}}).empty());
    drive.goOn();
    EXPECT_TRUE(waitUntil([&] {
        return existing(checker, {{folder / "drive/later.mov", folder / "drive"}}).size() == 1;
    }));
}

}  // namespace
}  // namespace morvane::test
