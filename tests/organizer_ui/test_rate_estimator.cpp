#include "organizer_ui/rate_estimator.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(RateEstimator, SaysNothingBeforeItKnows) {
    RateEstimator rate;
    EXPECT_FALSE(rate.bytesPerSecond());
    rate.add(0, 0);
    EXPECT_FALSE(rate.bytesPerSecond());
    rate.add(0.5, 50'000'000);
    EXPECT_FALSE(rate.bytesPerSecond()) << "half a second is too short a look";
    EXPECT_FALSE(rate.secondsFor(10));
}

TEST(RateEstimator, MeasuresTheRecentRate) {
    RateEstimator rate;
    std::int64_t bytes = 0;
    for (int second = 0; second <= 60; ++second) {
        rate.add(second, bytes);
        bytes += second < 30 ? 10'000'000 : 100'000'000;
    }
    ASSERT_TRUE(rate.bytesPerSecond());
    EXPECT_NEAR(*rate.bytesPerSecond(), 100'000'000, 1) << "the slow beginning is outside the window";
    ASSERT_TRUE(rate.secondsFor(1'000'000'000));
    EXPECT_NEAR(*rate.secondsFor(1'000'000'000), 10, 1e-6);
}

TEST(RateEstimator, KeepsARateOverALongSilence) {
    RateEstimator rate;
    rate.add(0, 0);
    rate.add(100, 1'000);
    ASSERT_TRUE(rate.bytesPerSecond());
    EXPECT_NEAR(*rate.bytesPerSecond(), 10, 1e-9);
}

TEST(RateEstimator, BeginsAnewWhenTheCountGoesBack) {
    RateEstimator rate;
    rate.add(0, 0);
    rate.add(5, 500);
    rate.add(6, 10);
    EXPECT_FALSE(rate.bytesPerSecond());
    rate.add(8, 30);
    ASSERT_TRUE(rate.bytesPerSecond());
    EXPECT_NEAR(*rate.bytesPerSecond(), 10, 1e-9);
    rate.restart();
    EXPECT_FALSE(rate.bytesPerSecond());
}

TEST(RateEstimator, NoRemainingTimeWhileNothingMoves) {
    RateEstimator rate;
    rate.add(0, 100);
    rate.add(5, 100);
    ASSERT_TRUE(rate.bytesPerSecond());
    EXPECT_EQ(*rate.bytesPerSecond(), 0);
    EXPECT_FALSE(rate.secondsFor(1));
}

TEST(RemainingText, RoundsMinutesUp) {
    EXPECT_EQ(remainingText(0), "剩余不到 1 分钟");
    EXPECT_EQ(remainingText(59.9), "剩余不到 1 分钟");
    EXPECT_EQ(remainingText(60), "剩余约 1 分钟");
    EXPECT_EQ(remainingText(61), "剩余约 2 分钟");
    EXPECT_EQ(remainingText(3540), "剩余约 59 分钟");
    EXPECT_EQ(remainingText(3541), "剩余约 1 小时");
    EXPECT_EQ(remainingText(2 * 3600 + 290), "剩余约 2 小时 5 分钟");
    EXPECT_EQ(remainingText(1e18), "剩余约 1000 小时");
}

TEST(ProgressText, GrowsWithWhatIsKnown) {
    RateEstimator rate;
    EXPECT_EQ(progressText(5, 0, rate), "");
    EXPECT_EQ(progressText(1'000'000, 2'000'000'000, rate), "1 MB / 2 GB");
    rate.add(0, 0);
    rate.add(10, 1'000'000'000);
    EXPECT_EQ(progressText(1'000'000'000, 13'000'000'000, rate), "1 GB / 13 GB\n100 MB/秒 · 剩余约 2 分钟");
    EXPECT_EQ(progressText(13'000'000'000, 13'000'000'000, rate),
              "13 GB / 13 GB\n100 MB/秒 · 剩余不到 1 分钟");
}

}  // namespace
}  // namespace morvane
