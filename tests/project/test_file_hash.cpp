#include "project/file_hash.h"

#include <fcntl.h>

#include <filesystem>
#include <numeric>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "project/project_errors.h"
#include "support/unique_fd.h"
#include "tests/project/engine_fixture.h"

namespace morvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t mebibyte = 1'048'576;

TEST(HashFile, AllSizesAroundTheBlocks) {
    const Workplace place;
    JobContext context;
    FileHasher hasher(context);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, mebibyte - 1, mebibyte, mebibyte + 1,
                                   2 * mebibyte - 1, 2 * mebibyte, 5 * mebibyte + 7, 9 * mebibyte}) {
        const std::string bytes = someBytes(size, static_cast<unsigned>(size));
        writeFile(place.source("f"), bytes);
        EXPECT_EQ(hasher.hashFile(fileLocation(place.source("f"))), digestOf(bytes)) << size;
    }
    EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(HashFile, CountsTheBytesRead) {
    const Workplace place;
    JobContext context;
    FileHasher hasher(context);
    std::vector<std::int64_t> counts;
    const auto onRead = [&](std::int64_t bytes) { counts.push_back(bytes); };
    writeFile(place.source("f"), someBytes(2 * mebibyte + 5));
    hasher.hashFile(fileLocation(place.source("f")), onRead);
    EXPECT_THAT(counts, ElementsAre(1'048'576, 2'097'152, 2'097'157));
    counts.clear();
    writeFile(place.source("f"), "");
    hasher.hashFile(fileLocation(place.source("f")), onRead);
    EXPECT_THAT(counts, IsEmpty());
}

TEST(HashFile, StopsBetweenBlocks) {
    const Workplace place;
    writeFile(place.source("large"), someBytes(6 * mebibyte));
    writeFile(place.source("small"), someBytes(mebibyte + 1));
    for (const char* name : {"large", "small"}) {
        Recorder recorder;
        FileHasher hasher(recorder.context());
        std::int64_t read = 0;
        EXPECT_TRUE(isCancelledBy([&] {
            hasher.hashFile(fileLocation(place.source(name)), [&](std::int64_t bytes) {
                read = bytes;
                recorder.stop();
            });
        }));
        EXPECT_EQ(read, 1'048'576);
        EXPECT_TRUE(isCancelledBy([&] { hasher.hashFile(fileLocation(place.source(name))); }));
    }
}

TEST(HashFile, ReadErrorsAreThrown) {
    const UniqueFd folder(::open("/tmp", O_RDONLY | O_DIRECTORY));
    JobContext context;
    FileHasher hasher(context);
    EXPECT_THROW(hasher.hashOpen(folder.get()), std::system_error);
}

/// The fingerprint as it is described, over bytes in memory.
std::string expectedFingerprint(const std::string& bytes) {
    std::string fed = std::to_string(bytes.size()) + bytes.substr(0, 65'536);
    if (bytes.size() > 65'536)
        fed += bytes.substr(std::max<std::size_t>(bytes.size(), 131'072) - 65'536, 65'536);
    return digestOf(fed);
}

TEST(FastFingerprint, HeadAndTailAtTheBoundaries) {
    const Workplace place;
    JobContext context;
    FileHasher hasher(context);
    for (const std::size_t size :
         {0U, 1U, 65'535U, 65'536U, 65'537U, 70'000U, 131'071U, 131'072U, 131'073U, 200'000U, 1'000'000U}) {
        const std::string bytes = someBytes(size);
        writeFile(place.source("f"), bytes);
        EXPECT_EQ(hasher.fastFingerprint(fileLocation(place.source("f")), static_cast<std::int64_t>(size)),
                  expectedFingerprint(bytes))
            << size;
    }
}

TEST(FastFingerprint, TheWholeOfASeventyThousandByteFileCounts) {
    const std::string bytes = someBytes(70'000);
    EXPECT_EQ(expectedFingerprint(bytes), digestOf("70000" + bytes));
}

TEST(FastFingerprint, StopsAndRefuses) {
    const Workplace place;
    writeFile(place.source("f"), "x");
    Recorder recorder;
    FileHasher hasher(recorder.context());
    EXPECT_EQ(errorOf([&] { hasher.fastFingerprint(fileLocation(place.source("")), 1); }),
              project_text::sourceNotRegular);
    recorder.stop();
    EXPECT_TRUE(isCancelledBy([&] { hasher.fastFingerprint(fileLocation(place.source("f")), 1); }));
    EXPECT_TRUE(isCancelledBy([&] { hasher.headFingerprint(fileLocation(place.source("f"))); }));
}

TEST(BlockPipe, KeepsOrder) {
    BlockPipe pipe;
    for (const bool overlap : {false, true}) {
        std::vector<char> drained;
        int filled = 0;
        pipe.transfer(
            [&filled](char* block, std::size_t room) -> std::size_t {
                EXPECT_EQ(room, BlockPipe::blockSize);
                if (filled == 100)
                    return 0;
                *block = static_cast<char>(filled++);
                return 1;
            },
            [&drained](const char* block, std::size_t count) {
                EXPECT_EQ(count, 1U);
                drained.push_back(*block);
            },
            overlap);
        std::vector<char> expected(100);
        std::iota(expected.begin(), expected.end(), static_cast<char>(0));
        EXPECT_EQ(drained, expected);
    }
}

TEST(BlockPipe, ThrowsWhatEitherSideThrowsAndGoesOnAfterwards) {
    BlockPipe pipe;
    for (const bool overlap : {false, true}) {
        int rounds = 0;
        const auto fill = [](char*, std::size_t) -> std::size_t { return 1; };
        const auto drain = [](const char*, std::size_t) {};
        EXPECT_EQ(errorOf([&] {
                      pipe.transfer(
                          fill,
                          [&rounds](const char*, std::size_t) {
                              if (++rounds == 10)
                                  throw std::runtime_error("drain");
                          },
                          overlap);
                  }),
                  "drain");
        EXPECT_EQ(errorOf([&] {
                      pipe.transfer(
                          [&rounds](char*, std::size_t) -> std::size_t {
                              if (++rounds == 20)
                                  throw std::runtime_error("fill");
                              return 1;
                          },
                          drain, overlap);
                  }),
                  "fill");
        EXPECT_EQ(errorOf([&] {
                      pipe.transfer([](char*, std::size_t) -> std::size_t { return 0; }, drain, overlap);
                  }),
                  "");
    }
}

}  // namespace
}  // namespace morvane::test
