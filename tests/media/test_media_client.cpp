// The client and a helper that crashes, hangs, lies or is not there.
#include <dirent.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "media/media_client.h"
#include "tests/media_maker.h"
#include "tests/test_support.h"

namespace morvane::test {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

/// Process ids of this program's children called morvane-media, ended but not collected ones included.
std::vector<int> helpers() {
    std::vector<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "stat");
        std::string stat;
        std::getline(file, stat);
        const auto end = stat.rfind(')');
        if (end == std::string::npos || stat.find("(morvane-media)") == std::string::npos)
            continue;
        std::istringstream rest(stat.substr(end + 1));
        char state = 0;
        int parent = 0;
        rest >> state >> parent;
        if (parent == ::getpid())
            found.push_back(std::stoi(entry.path().filename().string()));
    }
    return found;
}

std::string factAbout(int process, const std::string& file, const std::string& key) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key))
            return line.substr(key.size());
    }
    return {};
}

std::size_t openDescriptors(const std::string& process) {
    const std::filesystem::directory_iterator entries("/proc/" + process + "/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::uint32_t crcOf(const std::string& bytes) {
    std::uint32_t crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xedb88320 : 0);
    }
    return ~crc;
}

std::string big32(std::uint32_t value) {
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
            static_cast<char>(value)};
}

std::string pngPiece(const std::string& kind, const std::string& content) {
    return big32(static_cast<std::uint32_t>(content.size())) + kind + content + big32(crcOf(kind + content));
}

class Client : public testing::Test {
protected:
    static void SetUpTestSuite() {
        media_ = std::make_unique<TemporaryFolder>();
        ffmpeg(testAudio("1") + Arguments{*media_ / "tone.wav"});
        vips({"black", *media_ / "black.png", "400", "300"});
    }
    static void TearDownTestSuite() { media_.reset(); }

    static std::string tone() { return *media_ / "tone.wav"; }
    static std::string black() { return *media_ / "black.png"; }
    bool works() { return client_.probe(tone(), {}).value && client_.thumbnail(black(), 100, {}).value; }
    /// Starts the helper and stops it in its tracks, as a read that never returns would.
    int hungHelper() {
        EXPECT_TRUE(works());
        const auto processes = helpers();
        EXPECT_EQ(processes.size(), 1U);
        ::kill(processes.at(0), SIGSTOP);
        return processes.at(0);
    }
    /// A program that stands in for the helper.
    std::string standIn(const std::string& script) {
        const std::string path = folder_ / "stand-in";
        writeFile(path, "#!/bin/sh\n" + script + "\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }

    static inline std::unique_ptr<TemporaryFolder> media_;
    TemporaryFolder folder_;
    MediaClient client_;
};

TEST_F(Client, StartsTheHelperOnDemandAndKeepsIt) {
    EXPECT_TRUE(helpers().empty());
    ASSERT_TRUE(works());
    const auto first = helpers();
    ASSERT_EQ(first.size(), 1U);
    ASSERT_TRUE(works());
    EXPECT_EQ(helpers(), first);
}

TEST_F(Client, EndsTheHelperWithItself) {
    {
        MediaClient other;
        ASSERT_TRUE(other.probe(tone(), {}).value);
        ASSERT_EQ(helpers().size(), 1U);
    }
    EXPECT_TRUE(helpers().empty());
}

TEST_F(Client, TheHelperIsConfined) {
    ASSERT_TRUE(works());
    const int helper = helpers().at(0);
    EXPECT_EQ(factAbout(helper, "status", "NoNewPrivs:"), "\t1");
    EXPECT_EQ(factAbout(helper, "status", "Seccomp:"), "\t2");
    EXPECT_NE(factAbout(helper, "limits", "Max address space").find("3221225472"), std::string::npos);
    EXPECT_NE(factAbout(helper, "limits", "Max file size").find("0"), std::string::npos);
}

TEST_F(Client, NothingStaysOpen) {
    ASSERT_TRUE(works());
    const std::size_t ours = openDescriptors("self");
    const std::string helper = std::to_string(helpers().at(0));
    const std::size_t theirs = openDescriptors(helper);
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(works());
    EXPECT_EQ(openDescriptors("self"), ours);
    EXPECT_EQ(openDescriptors(helper), theirs);
}

TEST_F(Client, AHelperThatDiedIdleIsReplacedUnnoticed) {
    ASSERT_TRUE(works());
    const int dead = helpers().at(0);
    ::kill(dead, SIGKILL);
    // Until the last of its threads is gone: before that its end of the channel may still stand open.
    siginfo_t end{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(dead), &end, WEXITED | WNOWAIT), 0);
    EXPECT_TRUE(works());
    EXPECT_EQ(helpers().size(), 1U);
}

TEST_F(Client, AHelperKilledDuringARequestLosesOnlyThatRequest) {
    const int helper = hungHelper();
    std::atomic<bool> isAsking = false;
    std::thread killer([&] {
        while (!isAsking)
            std::this_thread::yield();
        ::kill(helper, SIGKILL);
    });
    const auto result = client_.probe(tone(), {.deadline = 20s, .cancelled = [&] {
                                                   isAsking = true;
                                                   return false;
                                               }});
    killer.join();
    EXPECT_EQ(result.outcome, MediaOutcome::HelperLost);
    EXPECT_FALSE(result.value);
    EXPECT_FALSE(result.reason.empty());
    EXPECT_TRUE(works());
}

TEST_F(Client, TheDeadlineHoldsForAHungHelper) {
    hungHelper();
    const auto start = Clock::now();
    const auto result = client_.probe(tone(), {.deadline = 400ms});
    EXPECT_EQ(result.outcome, MediaOutcome::Deadline);
    EXPECT_GE(secondsSince(start), 0.4);
    EXPECT_LT(secondsSince(start), 2.0);
    EXPECT_TRUE(helpers().empty());
    EXPECT_TRUE(works());
}

TEST_F(Client, ACancelEndsAHungHelperAtOnce) {
    hungHelper();
    const auto start = Clock::now();
    std::atomic<bool> isCancelled = false;
    std::thread canceller([&] {
        while (secondsSince(start) < 0.2)
            std::this_thread::yield();
        isCancelled = true;
    });
    const auto result = client_.thumbnail(black(), 100, {.cancelled = [&] { return isCancelled.load(); }});
    const double took = secondsSince(start);
    canceller.join();
    EXPECT_EQ(result.outcome, MediaOutcome::Cancelled);
    EXPECT_LT(took, 1.0);
    EXPECT_TRUE(works());
}

TEST_F(Client, AMissingHelperIsAnAnswer) {
    MediaClient none(folder_ / "not-there");
    EXPECT_EQ(none.probe(tone(), {}).outcome, MediaOutcome::HelperLost);
    EXPECT_EQ(none.thumbnail(black(), 100, {}).outcome, MediaOutcome::HelperLost);
}

TEST_F(Client, AHelperThatEndsAtOnceIsAnAnswer) {
    MediaClient broken(standIn("exit 3"));
    EXPECT_EQ(broken.probe(tone(), {}).outcome, MediaOutcome::HelperLost);
    EXPECT_EQ(broken.probe(tone(), {}).outcome, MediaOutcome::HelperLost);
}

TEST_F(Client, NonsenseIsNoAnswer) {
    MediaClient liar(standIn("printf 'no answer at all, only text' >&3; read line <&3"));
    EXPECT_EQ(liar.probe(tone(), {}).outcome, MediaOutcome::HelperLost);
    // The right mark and a promise of four gigabytes.
    MediaClient boaster(standIn("printf 'AVRM\\001\\000\\000\\000\\377\\377\\377\\377' >&3; read line <&3"));
    EXPECT_EQ(boaster.thumbnail(black(), 100, {}).outcome, MediaOutcome::HelperLost);
    // A thumbnail of 65536 pixels a side in eight bytes.
    MediaClient dreamer(
        standIn("printf 'AVRM\\001\\000\\000\\000\\010\\000\\000\\000"
                "\\000\\000\\001\\000\\000\\000\\001\\000' >&3; read line <&3"));
    EXPECT_EQ(dreamer.thumbnail(black(), 100, {}).outcome, MediaOutcome::HelperLost);
}

TEST_F(Client, AHelperThatNeverReadsIsWaitedForOnlyUntilTheDeadline) {
    MediaClient deaf(standIn("exec sleep 1000"));
    EXPECT_EQ(deaf.probe(tone(), {.deadline = 300ms}).outcome, MediaOutcome::Deadline);
}

TEST_F(Client, MemoryIsLimited) {
    // 40,000 by 40,000 interlaced pixels of four bytes: more than six gigabytes at once.
    std::string header = big32(40'000) + big32(40'000) + std::string("\x08\x06\0\0\x01", 5);
    const std::string bomb = "\x89PNG\r\n\x1a\n" + pngPiece("IHDR", header) +
                             pngPiece("IDAT", std::string("\x78\x9c\x63\0\0\0\x01\0\x01", 9)) +
                             pngPiece("IEND", "");
    writeFile(folder_ / "bomb.png", bomb);
    const auto result = client_.thumbnail(folder_ / "bomb.png", 1200, {});
    EXPECT_FALSE(result.value);
    EXPECT_NE(result.outcome, MediaOutcome::Deadline);
    EXPECT_TRUE(works());
}

TEST_F(Client, CallsFromSeveralThreadsTakeTurns) {
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 10; ++k)
                right += works() ? 1 : 0;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(right, 40);
    EXPECT_EQ(helpers().size(), 1U);
}

TEST_F(Client, SizesOutsideTheRangeAreBroughtIntoIt) {
    EXPECT_EQ(client_.thumbnail(black(), 100'000, {}).value.value().width, 400);
    EXPECT_EQ(client_.thumbnail(black(), 0, {}).value.value().width, 1);
}

}  // namespace

}  // namespace morvane::test
