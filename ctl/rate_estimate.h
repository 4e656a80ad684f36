// Speed and remaining time of a copy, as people want to read them: calm, not jumping.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace morvane {

class RateEstimate {
public:
    using Clock = std::chrono::steady_clock;

    /// Notes that `bytes` in all were done at `when`; both never decrease.
    void note(std::int64_t bytes, Clock::time_point when);
    /// Bytes per second over the last ten seconds; nothing before one second was seen.
    std::optional<double> bytesPerSecond() const;
    /// Time until `totalBytes` are done at that speed; nothing while the speed is unknown or 0.
    std::optional<std::chrono::seconds> remaining(std::int64_t totalBytes) const;

private:
    struct Sample {
        Clock::time_point when;
        std::int64_t bytes;
    };
    std::deque<Sample> samples_;
};

}  // namespace morvane
