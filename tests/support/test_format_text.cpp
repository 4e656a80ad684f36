// Numbers as the user reads them.
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "support/format_text.h"

namespace morvane {
namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

TEST(FormatBytes, FileStyle) {
    EXPECT_EQ(formatBytes(0), "0 KB");
    EXPECT_EQ(formatBytes(1), "1 字节");
    EXPECT_EQ(formatBytes(999), "999 字节");
    EXPECT_EQ(formatBytes(1000), "1 KB");
    EXPECT_EQ(formatBytes(1499), "1 KB");
    EXPECT_EQ(formatBytes(1500), "2 KB");
    EXPECT_EQ(formatBytes(986'400'000), "986.4 MB");
    EXPECT_EQ(formatBytes(2'000'000), "2 MB");
    EXPECT_EQ(formatBytes(1'040'000'000), "1.04 GB");
    EXPECT_EQ(formatBytes(1'500'000'000), "1.5 GB");
    EXPECT_EQ(formatBytes(3'000'000'000'000), "3 TB");
}

TEST(FormatBytes, RoundingCanReachTheNextUnit) {
    EXPECT_EQ(formatBytes(999'499), "999 KB");
    EXPECT_EQ(formatBytes(999'500), "1 MB");
    EXPECT_EQ(formatBytes(999'949'999), "999.9 MB");
    EXPECT_EQ(formatBytes(999'950'000), "1 GB");
    EXPECT_EQ(formatBytes(999'994'999'999), "999.99 GB");
    EXPECT_EQ(formatBytes(999'995'000'000), "1 TB");
    EXPECT_EQ(formatBytes(1'005'000'000), "1.01 GB");
    EXPECT_EQ(formatBytes(1'004'999'999), "1 GB");
}

TEST(FormatBytes, BothEndsOfTheRange) {
    EXPECT_EQ(formatBytes(largest), "9.22 EB");
    EXPECT_EQ(formatBytes(-1), "0 KB");
    EXPECT_EQ(formatBytes(std::numeric_limits<std::int64_t>::min()), "0 KB");
}

// The environment is read once a process, so each locale runs in a process of its own.
class CountOfLocale : public testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    [[noreturn]] static void exitTelling(const char* locale, std::int64_t count,
                                         const std::string& expected) {
        ::setenv("LC_ALL", locale, 1);
        std::exit(formatCount(count) == expected ? 0 : 1);
    }
};

TEST_F(CountOfLocale, GroupsAsTheUserDoes) {
    EXPECT_EXIT(exitTelling("C.UTF-8", 12486, "12,486"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("zh_CN.UTF-8", 999, "999"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("zh_CN.UTF-8", 0, "0"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("zh_CN.UTF-8", largest, "9,223,372,036,854,775,807"), testing::ExitedWithCode(0),
                "");
    EXPECT_EXIT(exitTelling("zh_CN.UTF-8", -1234, "-1,234"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("de_DE.UTF-8", 12486, "12.486"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exitTelling("en_IN", 1234567, "12,34,567"), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace morvane
