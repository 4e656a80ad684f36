#include "ctl/rate_estimate.h"

#include <cmath>

namespace morvane {
namespace {

constexpr auto window = std::chrono::seconds(10);
constexpr auto shortest = std::chrono::seconds(1);
constexpr double longestShown = 359'999;  // 99:59:59

}  // namespace

void RateEstimate::note(std::int64_t bytes, Clock::time_point when) {
    samples_.push_back({when, bytes});
    while (samples_.size() > 2 && when - samples_[1].when >= window)
        samples_.pop_front();
}

std::optional<double> RateEstimate::bytesPerSecond() const {
    if (samples_.size() < 2 || samples_.back().when - samples_.front().when < shortest)
        return std::nullopt;
    const std::chrono::duration<double> span = samples_.back().when - samples_.front().when;
    return static_cast<double>(samples_.back().bytes - samples_.front().bytes) / span.count();
}

std::optional<std::chrono::seconds> RateEstimate::remaining(std::int64_t totalBytes) const {
    const std::optional<double> rate = bytesPerSecond();
    if (!rate || *rate <= 0)
        return std::nullopt;
    const double left = static_cast<double>(totalBytes - samples_.back().bytes);
    const double seconds = std::ceil(std::max(left, 0.0) / *rate);
    return std::chrono::seconds(static_cast<std::int64_t>(std::min(seconds, longestShown)));
}

}  // namespace morvane
