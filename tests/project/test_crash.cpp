// Runs that are killed: at the entry or exit of system calls spread over the whole run, and while
// another process holds the project.
#include <fcntl.h>
#include <poll.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "project/execution.h"
#include "project/manifest.h"
#include "project/project_errors.h"
#include "project/temporary_file.h"
#include "support/system_error.h"
#include "support/unique_fd.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

using testing::Each;

/// A child process that runs `work` and ends with status 0, or 1 when `work` throws.
pid_t startChild(const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child != 0)
        return child;
    try {
        work();
        ::_exit(0);
    } catch (...) {
        ::_exit(1);
    }
}

int waitFor(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR)
        continue;
    return status;
}

/// Runs `work` in a child and kills it with SIGKILL at its `stop`-th system call stop (entries and exits
/// of its first thread count one each). Returns how many stops there were; fewer than `stop` when it
/// ended by itself, nothing when children cannot be traced here.
std::optional<long> runKilledAt(long stop, const std::function<void()>& work) {
    const pid_t child = startChild([&work] {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            ::_exit(77);
        ::raise(SIGSTOP);
        work();
    });
    int status = waitFor(child);
    if (WIFEXITED(status))
        return std::nullopt;
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    long stops = 0;
    int signal = 0;
    while (stops < stop) {
        ::ptrace(PTRACE_SYSCALL, child, nullptr, signal);
        status = waitFor(child);
        if (WIFEXITED(status) || WIFSIGNALED(status)) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
            return stops;
        }
        const bool isSystemCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
        stops += isSystemCall ? 1 : 0;
        signal = isSystemCall ? 0 : WSTOPSIG(status);
    }
    ::kill(child, SIGKILL);
    waitFor(child);
    return stops;
}

class Crash : public testing::Test {
protected:
    Crash() {
        makeTree(place.source(""), {{"d/a.mov", "first"},
                                    {"d/b.mov", someBytes(2'200'000)},
                                    {"d/inner/c.wav", someBytes(70'000)},
                                    {"d/e.txt", ""},
                                    {"d/f.mov", "another"}});
        // Old enough to tell a copy's own date from the source's.
        const timespec past[2] = {{1'500'000'000, 0}, {1'500'000'000, 0}};
        for (const char* name : {"d/a.mov", "d/b.mov", "d/inner/c.wav", "d/e.txt", "d/f.mov"})
            EXPECT_EQ(::utimensat(AT_FDCWD, place.source(name).c_str(), past, 0), 0);
        plan = place.plan("P", {"d/"});
    }

    std::string root() const { return place.into() + "/P"; }
    FileUrl manifestURL() const { return fileLocation(root() + "/" + std::string(manifestFilename)); }
    std::string copyOf(const ProjectPlanItem& item) const { return root() + "/" + item.relativeDestination; }

    void execute() const {
        JobContext context;
        executeSynchronously(context, plan);
    }
    ProjectResult retry() const {
        JobContext context;
        return retrySynchronously(context, manifestURL());
    }
    /// What must hold at any moment of any run: what is recorded as verified is there and right, and
    /// under a final name stands nothing but a whole copy.
    void expectSound() const {
        const ProjectManifest manifest = manifestAt(root());
        for (std::size_t index = 0; index < manifest.files.size(); ++index) {
            const ProjectPlanItem& item = manifest.plan.items[index];
            const bool isThere = std::filesystem::exists(copyOf(item));
            if (manifest.files[index].state == ProjectFileState::verified) {
                ASSERT_TRUE(isThere) << item.relativeDestination;
            }
            if (isThere) {
                EXPECT_EQ(readAll(copyOf(item)), readAll(item.sourceURL.path)) << item.relativeDestination;
            }
        }
    }
    void expectFinished(const ProjectResult& result) const {
        EXPECT_EQ(result.copiedCount, static_cast<std::int64_t>(plan.items.size()));
        EXPECT_EQ(result.failedCount, 0);
        expectSound();
        for (const auto& item : plan.items) {
            struct stat copy {};
            ASSERT_EQ(::stat(copyOf(item).c_str(), &copy), 0);
            EXPECT_EQ(copy.st_mode & 0777, 0644U) << item.relativeDestination;
            EXPECT_NEAR(static_cast<double>(copy.st_mtim.tv_sec), item.modified, 1)
                << item.relativeDestination;
        }
        for (const auto& path : listTree(root()))
            EXPECT_FALSE(isTemporaryName(std::filesystem::path(path).filename().string())) << path;
    }

    Workplace place;
    ProjectPlan plan;
};

TEST_F(Crash, KilledAnywhereAndResumed) {
    constexpr long rounds = 24;
    const auto total = runKilledAt(std::numeric_limits<long>::max(), [this] { execute(); });
    if (!total)
        GTEST_SKIP() << "this system lets no process be traced: " << systemErrorText(errno);
    ASSERT_GT(*total, 200);
    int resumed = 0;
    for (long round = 0; round < rounds; ++round) {
        std::filesystem::remove_all(root());
        // Odd steps so that entries and exits of calls both come up.
        const long stop = 1 + round * *total / rounds + round % 2;
        ASSERT_TRUE(runKilledAt(stop, [this] { execute(); }));
        if (!std::filesystem::exists(manifestURL().path))
            continue;
        expectSound();
        if (round % 3 == 0) {  // and once more while it is resumed
            runKilledAt(stop / 3, [this] { retry(); });
            expectSound();
        }
        expectFinished(retry());
        ++resumed;
        if (HasFailure())
            FAIL() << "killed at stop " << stop << " of " << *total;
    }
    EXPECT_GT(resumed, rounds / 2);
}

TEST_F(Crash, TwoProcessesAtOnce) {
    int toChild[2];
    int toParent[2];
    ASSERT_EQ(::pipe(toChild), 0);
    ASSERT_EQ(::pipe(toParent), 0);
    const pid_t child = startChild([&] {
        bool hasWaited = false;
        JobContext context([] { return false; },
                           [&](const ProjectProgress&, JobContext::Delivery) {
                               char byte = 'x';
                               if (std::exchange(hasWaited, true))
                                   return;
                               if (::write(toParent[1], &byte, 1) != 1 || ::read(toChild[0], &byte, 1) != 1)
                                   ::_exit(2);
                           });
        executeSynchronously(context, plan);
    });
    char byte = 'x';
    ASSERT_EQ(::read(toParent[0], &byte, 1), 1);  // the child copies its first file now
    const auto before = listTree(root());
    const std::string manifest = readAll(manifestURL().path);
    EXPECT_EQ(errorOf([this] { retry(); }), project_text::busy);
    EXPECT_EQ(errorOf([this] { execute(); }), project_text::cannotMakeProject);
    EXPECT_EQ(listTree(root()), before);
    EXPECT_EQ(readAll(manifestURL().path), manifest);
    ASSERT_EQ(::write(toChild[1], &byte, 1), 1);
    const int status = waitFor(child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    expectFinished(retry());
    for (const int end : {toChild[0], toChild[1], toParent[0], toParent[1]})
        ::close(end);
}

TEST_F(Crash, TheLockGoesWithTheProcess) {
    const pid_t child = startChild([this] {
        JobContext context([] { return false; },
                           [](const ProjectProgress&, JobContext::Delivery) { ::kill(::getpid(), SIGKILL); });
        executeSynchronously(context, plan);
    });
    const int status = waitFor(child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    expectSound();
    expectFinished(retry());
}

}  // namespace
}  // namespace morvane::test
