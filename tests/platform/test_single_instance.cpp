// One running window per store folder: claims of this process and of others.
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "platform/single_instance.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using std::string;
using test::TemporaryFolder;
using test::waitUntil;

// A process that claims a folder and keeps the claim until it is ended.
class OtherProcess {
public:
    explicit OtherProcess(const string& storeFolder) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0)
            throw std::runtime_error("no pipe");
        process_ = ::fork();
        if (process_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            const SingleInstance claim(storeFolder);
            const char answer = claim.isFirst() ? '1' : '2';
            if (::write(ends[1], &answer, 1) == 1)
                ::pause();
            ::_exit(0);
        }
        ::close(ends[1]);
        char answer = 0;
        isFirst_ = ::read(ends[0], &answer, 1) == 1 && answer == '1';
        ::close(ends[0]);
    }
    ~OtherProcess() { crash(); }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    bool isFirst() const { return isFirst_; }
    void crash() {
        if (process_ <= 0)
            return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        process_ = -1;
    }

private:
    pid_t process_ = -1;
    bool isFirst_ = false;
};

class SingleInstanceTest : public testing::Test {
protected:
    void SetUp() override {
        // Longer than any socket address may be.
        runtime_ = folder_ / (string(120, 'r') + "/runtime");
        std::filesystem::create_directories(runtime_);
        ASSERT_EQ(::chmod(runtime_.c_str(), 0700), 0);
        ::setenv("XDG_RUNTIME_DIR", runtime_.c_str(), 1);
        store_ = folder_ / "store";
        std::filesystem::create_directory(store_);
    }
    void TearDown() override { ::unsetenv("XDG_RUNTIME_DIR"); }

    const TemporaryFolder folder_;
    string runtime_;
    string store_;
};

TEST_F(SingleInstanceTest, TheSecondIsNotFirstUntilTheFirstEnds) {
    auto first = std::make_unique<SingleInstance>(store_);
    EXPECT_TRUE(first->isFirst());
    EXPECT_FALSE(SingleInstance(store_).isFirst());
    EXPECT_FALSE(SingleInstance(store_).isFirst());
    first.reset();
    EXPECT_TRUE(SingleInstance(store_).isFirst());
}

TEST_F(SingleInstanceTest, EveryStoreHasAClaimOfItsOwnUnderAnyName) {
    const SingleInstance first(store_);
    ASSERT_EQ(::symlink("store", (folder_ / "link").c_str()), 0);
    EXPECT_FALSE(SingleInstance(folder_ / "link").isFirst());
    EXPECT_FALSE(SingleInstance(folder_ / "link/../store/.").isFirst());
    EXPECT_FALSE(SingleInstance(store_ + "//").isFirst());
    EXPECT_TRUE(SingleInstance(folder_ / "other").isFirst());  // need not exist
}

TEST_F(SingleInstanceTest, AStoreThatIsMadeAfterTheClaimKeepsIt) {
    ASSERT_EQ(::symlink("store", (folder_ / "link").c_str()), 0);
    const string made = folder_ / "link/data/library";
    const SingleInstance first(made);
    EXPECT_TRUE(first.isFirst());
    EXPECT_FALSE(SingleInstance(made + "/").isFirst());
    std::filesystem::create_directories(made);
    EXPECT_FALSE(SingleInstance(made).isFirst());
    EXPECT_FALSE(SingleInstance(store_ + "/data/library").isFirst());
}

TEST_F(SingleInstanceTest, TheSecondBringsTheFirstForward) {
    SingleInstance first(store_);
    int raised = 0;
    const auto mainThread = std::this_thread::get_id();
    first.onRaise([&] {
        ++raised;
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
    });
    SingleInstance second(store_);
    ASSERT_FALSE(second.isFirst());
    EXPECT_TRUE(second.raiseFirst());
    EXPECT_TRUE(waitUntil([&] { return raised == 1; }));
    second.raiseFirst();
    EXPECT_TRUE(waitUntil([&] { return raised == 2; }));
}

TEST_F(SingleInstanceTest, ARequestBeforeAnybodyListensIsKept) {
    SingleInstance first(store_);
    SingleInstance(store_).raiseFirst();
    bool raised = false;
    first.onRaise([&raised] { raised = true; });
    EXPECT_TRUE(waitUntil([&raised] { return raised; }));
}

TEST_F(SingleInstanceTest, RequestsOfAnotherProcessArrive) {
    SingleInstance first(store_);
    bool raised = false;
    first.onRaise([&raised] { raised = true; });
    const pid_t asking = ::fork();
    if (asking == 0) {
        SingleInstance(store_).raiseFirst();
        ::_exit(0);
    }
    EXPECT_TRUE(waitUntil([&raised] { return raised; }));
    EXPECT_EQ(::waitpid(asking, nullptr, 0), asking);
}

TEST_F(SingleInstanceTest, ACrashLeavesNoClaim) {
    OtherProcess other(store_);
    ASSERT_TRUE(other.isFirst());
    EXPECT_FALSE(SingleInstance(store_).isFirst());
    other.crash();
    // Its socket is still there, dead.
    bool socketLeft = false;
    for (const string& name : test::listTree(runtime_))
        socketLeft = socketLeft || name.ends_with(".socket");
    EXPECT_TRUE(socketLeft);

    SingleInstance next(store_);
    EXPECT_TRUE(next.isFirst());
    bool raised = false;
    next.onRaise([&raised] { raised = true; });
    SingleInstance(store_).raiseFirst();
    EXPECT_TRUE(waitUntil([&raised] { return raised; }));
}

TEST_F(SingleInstanceTest, AnUnreachableFirstIsGivenUp) {
    const SingleInstance first(store_);
    SingleInstance second(store_);
    for (const string& name : test::listTree(runtime_)) {
        if (name.ends_with(".socket"))
            std::filesystem::remove(runtime_ + "/" + name);
    }
    const auto start = std::chrono::steady_clock::now();
    second.raiseFirst();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

TEST_F(SingleInstanceTest, ACommandHoldsTheClaimButCannotBeBroughtForward) {
    const SingleInstance command(store_, SingleInstance::Role::Command);
    EXPECT_TRUE(command.isFirst());
    SingleInstance window(store_);
    EXPECT_FALSE(window.isFirst());
    EXPECT_FALSE(window.raiseFirst());
}

TEST_F(SingleInstanceTest, AFullQueueOfRequestsIsGivenUpToo) {
    const SingleInstance first(store_);  // never listens
    SingleInstance second(store_);
    for (int count = 0; count < 9; ++count)  // as many as wait in its queue
        second.raiseFirst();
    const auto start = std::chrono::steady_clock::now();
    second.raiseFirst();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

TEST_F(SingleInstanceTest, ARuntimeFolderOthersCanEnterIsNotUsed) {
    ASSERT_EQ(::chmod(runtime_.c_str(), 0755), 0);
    const SingleInstance first(store_);
    EXPECT_TRUE(first.isFirst());
    EXPECT_FALSE(SingleInstance(store_).isFirst());  // the fallback works the same
    EXPECT_TRUE(test::listTree(runtime_).empty());
}

TEST_F(SingleInstanceTest, LeavesOnlyTheLockFileBehind) {
    {
        const SingleInstance first(store_);
        EXPECT_EQ(test::listTree(runtime_).size(), 2U);
    }
    const auto left = test::listTree(runtime_);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_TRUE(left.front().ends_with(".lock"));
}

}  // namespace
}  // namespace morvane
