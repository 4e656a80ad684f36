// How fast a job goes and how long it still takes, from the engine's progress reports.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace morvane {

/// The rate over the last `windowSeconds`; says nothing until the reports span `leastSeconds`, and
/// begins anew when the count of bytes goes back (another stage of the job). Pure: the caller
/// brings the clock.
class RateEstimator {
public:
    static constexpr double windowSeconds = 20;
    static constexpr double leastSeconds = 1;

    /// Forgets everything: a job begins.
    void restart();
    /// A report at `seconds` (of any steady clock) with `completedBytes` done.
    void add(double seconds, std::int64_t completedBytes);
    std::optional<double> bytesPerSecond() const;
    /// Seconds until `remainingBytes` are done; nothing while the rate is unknown or 0.
    std::optional<double> secondsFor(std::int64_t remainingBytes) const;

private:
    struct Sample {
        double seconds;
        std::int64_t bytes;
    };
    std::deque<Sample> samples_;
};

/// "剩余不到 1 分钟", "剩余约 12 分钟", "剩余约 2 小时 5 分钟"; minutes are rounded up.
std::string remainingText(double seconds);

/// Text of the progress bar's tool tip: bytes done and in all, then rate and remaining time where
/// they are known. Empty when there is nothing to count.
std::string progressText(std::int64_t completedBytes, std::int64_t totalBytes, const RateEstimator& rate);

}  // namespace morvane
