// Running programs: status, standard error, cancelling.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/run_process.h"
#include "tests/test_support.h"

namespace morvane {
namespace {

using std::string;

ProcessOutcome shell(const string& script, const std::function<bool()>& cancelled = {}) {
    return runProcess("/bin/sh", {"-c", script}, cancelled);
}

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

TEST(RunProcess, GivesTheExitStatus) {
    EXPECT_EQ(runProcess("/bin/true", {}, {}).exitStatus, 0);
    EXPECT_EQ(shell("exit 7").exitStatus, 7);
    EXPECT_EQ(shell("kill -TERM $$").exitStatus, 128 + SIGTERM);
    EXPECT_EQ(runProcess("true", {}, {}).exitStatus, 0);  // found through PATH
}

TEST(RunProcess, ArgumentsAreNeverInterpreted) {
    const test::TemporaryFolder folder;
    const string odd = folder / "a b$(x);'\"\n中\xFF";
    EXPECT_EQ(runProcess("touch", {"--", odd, folder / "-n"}, {}).exitStatus, 0);
    EXPECT_TRUE(std::filesystem::exists(odd));
    EXPECT_TRUE(std::filesystem::exists(folder / "-n"));
}

TEST(RunProcess, ReadsStandardErrorToItsEnd) {
    EXPECT_EQ(shell("echo one >&2; echo unseen; printf two >&2").standardError, "one\ntwo");
    // Many times what a pipe holds.
    const ProcessOutcome outcome = shell("head -c 3000000 /dev/zero | tr '\\0' x >&2; exit 3");
    EXPECT_EQ(outcome.exitStatus, 3);
    EXPECT_EQ(outcome.standardError, string(3'000'000, 'x'));
}

TEST(RunProcess, InputAndOutputAreTheNullDevice) {
    for (const char* stream : {"0", "1"}) {
        const string path = string("/proc/$$/fd/") + stream;
        EXPECT_EQ(shell("test /dev/null -ef " + path + " && echo null >&2").standardError, "null\n")
            << stream;
    }
    EXPECT_EQ(shell("cat; exit $?").exitStatus, 0);
}

TEST(RunProcess, TheProgramInheritsNothingElse) {
    const int open = ::dup(STDERR_FILENO);  // not marked to be closed
    const string listed = shell("exec ls /proc/self/fd >&2").standardError;
    ::close(open);
    EXPECT_EQ(listed, "0\n1\n2\n3\n");  // the last one is the listing itself
}

TEST(RunProcess, SignalsHaveTheirUsualMeaning) {
    sigset_t blocked;
    sigset_t before;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const auto handler = ::signal(SIGTERM, SIG_IGN);
    const int status = shell("kill -TERM $$; exit 0").exitStatus;
    ::signal(SIGTERM, handler);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(status, 128 + SIGTERM);
}

TEST(RunProcess, AMissingProgramIsAnError) {
    const test::TemporaryFolder folder;
    test::writeFile(folder / "text", "no program");
    for (const auto& [program, expected] :
         {std::pair{string("/does/not/exist"), ENOENT}, std::pair{folder / "text", EACCES},
          std::pair{folder.path(), EACCES}}) {
        try {
            runProcess(program, {}, {});
            ADD_FAILURE() << program << " was started";
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code().value(), expected) << program;
        }
    }
}

TEST(RunProcess, CancellingEndsTheProgram) {
    const auto start = std::chrono::steady_clock::now();
    int asked = 0;
    const ProcessOutcome outcome = runProcess("sleep", {"300"}, [&] { return ++asked > 3; });
    EXPECT_EQ(outcome.exitStatus, 128 + SIGKILL);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(RunProcess, IsAskedWhileTheProgramFloods) {
    int asked = 0;
    const ProcessOutcome outcome = shell("exec yes >&2", [&] { return ++asked > 2; });
    EXPECT_EQ(outcome.exitStatus, 128 + SIGKILL);
}

TEST(RunProcess, DoesNotWaitForWhatTheProgramLeftBehind) {
    // The child left behind holds the stream open until it is ended.
    const ProcessOutcome outcome = shell("sleep 300 & echo $! >&2");
    EXPECT_EQ(outcome.exitStatus, 0);
    const pid_t left = std::stoi(outcome.standardError);
    EXPECT_EQ(::kill(left, 0), 0);
    ::kill(left, SIGKILL);
}

TEST(RunProcess, AnErrorWhileAskingEndsTheProgram) {
    const std::size_t before = openDescriptors();
    EXPECT_THROW(runProcess("sleep", {"300"}, []() -> bool { throw std::runtime_error("asked"); }),
                 std::runtime_error);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);  // no child is left
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(RunProcess, LeavesNoDescriptorOpen) {
    const std::size_t before = openDescriptors();
    for (int count = 0; count < 20; ++count)
        shell("echo x >&2");
    EXPECT_EQ(openDescriptors(), before);
}

TEST(RunProcess, ManyThreadsAtOnce) {
    std::vector<string> results(4);
    std::vector<std::thread> threads;
    for (std::size_t index = 0; index < results.size(); ++index) {
        threads.emplace_back([&results, index] {
            for (int count = 0; count < 10; ++count)
                results[index] = shell("printf " + std::to_string(index) + " >&2").standardError;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(results, (std::vector<string>{"0", "1", "2", "3"}));
}

}  // namespace
}  // namespace morvane
