// What the command line shows in a terminal: harmless, cut to its width, calm.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ctl/plan_text.h"
#include "ctl/project_progress.h"
#include "ctl/rate_estimate.h"
#include "ctl/terminal_text.h"

namespace morvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(WithoutControls, ShowsControlsAsQuestionMarks) {
    EXPECT_EQ(withoutControls("a\nb\tc\x1b[31m\x7f"), "a?b?c?[31m?");
    EXPECT_EQ(withoutControls("\xc2\x9b"
                              "31m"),
              "?31m");  // the one-byte form of ESC [
    EXPECT_EQ(withoutControls("日落 🎬"), "日落 🎬");
    EXPECT_EQ(withoutControls("x\xffy"), "x\xef\xbf\xbdy");
}

TEST(CutToWidth, CountsWideCharactersTwice) {
    EXPECT_EQ(cutToWidth("abcdef", 6), "abcdef");
    EXPECT_EQ(cutToWidth("abcdef", 5), "abcd…");
    EXPECT_EQ(cutToWidth("素材助手", 8), "素材助手");
    EXPECT_EQ(cutToWidth("素材助手", 7), "素材助…");
    EXPECT_EQ(cutToWidth("素材助手", 6), "素材…");
    EXPECT_EQ(cutToWidth("a🎬b", 4), "a🎬b");
    EXPECT_EQ(cutToWidth("e\xcc\x81tude", 5), "e\xcc\x81tude");  // a combining mark takes no room
    EXPECT_EQ(cutToWidth("", 3), "");
}

class Rate : public testing::Test {
protected:
    void note(std::int64_t bytes, milliseconds when) {
        rate_.note(bytes, RateEstimate::Clock::time_point(when));
    }
    RateEstimate rate_;
};

TEST_F(Rate, IsUnknownBeforeASecondWasSeen) {
    EXPECT_EQ(rate_.bytesPerSecond(), std::nullopt);
    note(0, milliseconds(0));
    note(500, milliseconds(999));
    EXPECT_EQ(rate_.bytesPerSecond(), std::nullopt);
    EXPECT_EQ(rate_.remaining(1000), std::nullopt);
}

TEST_F(Rate, IsTheSpeedOfTheLastTenSeconds) {
    note(0, seconds(0));
    for (int second = 1; second <= 20; ++second)
        note(second * 100, seconds(second));
    ASSERT_TRUE(rate_.bytesPerSecond());
    EXPECT_DOUBLE_EQ(*rate_.bytesPerSecond(), 100);
    EXPECT_EQ(rate_.remaining(2500), seconds(5));
    for (int second = 21; second <= 40; ++second)
        note(2000 + (second - 20) * 1000, seconds(second));
    EXPECT_DOUBLE_EQ(*rate_.bytesPerSecond(), 1000);
}

TEST_F(Rate, AStandstillHasNoRemainingTime) {
    note(10, seconds(0));
    note(10, seconds(2));
    EXPECT_EQ(rate_.bytesPerSecond(), 0);
    EXPECT_EQ(rate_.remaining(100), std::nullopt);
}

TEST_F(Rate, MoreThanTheTotalLeavesNothing) {
    note(0, seconds(0));
    note(100, seconds(2));
    EXPECT_EQ(rate_.remaining(50), seconds(0));
}

TEST(ProgressText, ShowsShareBytesRateAndRemainingTime) {
    RateEstimate rate;
    rate.note(0, RateEstimate::Clock::time_point(seconds(0)));
    rate.note(25'000'000, RateEstimate::Clock::time_point(seconds(2)));
    const ProjectProgress progress{1, 4, 25'000'000, 100'000'000, "复制与校验：A001.MOV"};
    EXPECT_EQ(progressText(progress, rate),
              "[======>                 ]  25%  25 MB / 100 MB  12.5 MB/s  剩余 0:06  复制与校验：A001.MOV");
}

TEST(ProgressText, WithoutTotalsShowsTheCount) {
    EXPECT_EQ(progressText({1200, 0, 5, 0, "正在分析来源"}, {}), "1,200  正在分析来源");
}

TEST(ProgressText, AFullBarHasNoHead) {
    EXPECT_THAT(progressText({2, 2, 10, 10, "done"}, {}),
                testing::StartsWith("[========================] 100%  10 字节 / 10 字节"));
}

ProjectPlanItem item(std::string destination, std::int64_t size) {
    ProjectPlanItem made;
    made.relativeDestination = std::move(destination);
    made.size = size;
    return made;
}

TEST(PlanText, IsATreeInPlanOrderWithSizesAndWarnings) {
    ProjectPlan plan;
    plan.rootURL = folderLocation("/projects/秋日");
    plan.items = {item("02_原始素材/卡/B.mov", 2'000'000), item("02_原始素材/卡/A.mov", 1'000'000),
                  item("04_音乐/song.wav", 3'000)};
    plan.items[1].duplicateOf = "/card/B.mov";
    plan.warnings = {"跳过符号链接：x"};
    EXPECT_EQ(planText(plan),
              "/projects/秋日/\n"
              "  02_原始素材/  （2 个文件 · 3 MB）\n"
              "    卡/  （2 个文件 · 3 MB）\n"
              "      B.mov  2 MB\n"
              "      A.mov  1 MB  重复素材\n"
              "  04_音乐/  （1 个文件 · 3 KB）\n"
              "    song.wav  3 KB\n"
              "3 个文件 · 3 MB\n"
              "• 跳过符号链接：x\n");
}

}  // namespace
}  // namespace morvane
