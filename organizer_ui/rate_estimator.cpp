#include "organizer_ui/rate_estimator.h"

#include <algorithm>
#include <cmath>

#include "support/format_text.h"

namespace morvane {

void RateEstimator::restart() {
    samples_.clear();
}

void RateEstimator::add(double seconds, std::int64_t completedBytes) {
    if (!samples_.empty() && completedBytes < samples_.back().bytes)
        samples_.clear();
    samples_.push_back({seconds, completedBytes});
    // One sample at or before the window's edge stays, so that the span never shrinks below it.
    while (samples_.size() > 2 && samples_[1].seconds <= seconds - windowSeconds)
        samples_.pop_front();
}

std::optional<double> RateEstimator::bytesPerSecond() const {
    if (samples_.size() < 2)
        return std::nullopt;
    const double span = samples_.back().seconds - samples_.front().seconds;
    if (span < leastSeconds)
        return std::nullopt;
    return static_cast<double>(samples_.back().bytes - samples_.front().bytes) / span;
}

std::optional<double> RateEstimator::secondsFor(std::int64_t remainingBytes) const {
    const std::optional<double> rate = bytesPerSecond();
    if (!rate || *rate <= 0)
        return std::nullopt;
    return static_cast<double>(remainingBytes) / *rate;
}

std::string remainingText(double seconds) {
    constexpr double longest = 1000.0 * 3600;  // beyond that the number says nothing
    const auto minutes = static_cast<std::int64_t>(std::ceil(std::min(seconds, longest) / 60));
    if (seconds < 60)
        return "剩余不到 1 分钟";
    if (minutes < 60)
        return "剩余约 " + std::to_string(minutes) + " 分钟";
    const std::string hours = "剩余约 " + std::to_string(minutes / 60) + " 小时";
    return minutes % 60 == 0 ? hours : hours + " " + std::to_string(minutes % 60) + " 分钟";
}

std::string progressText(std::int64_t completedBytes, std::int64_t totalBytes, const RateEstimator& rate) {
    if (totalBytes < 1)
        return {};
    std::string text = formatBytes(completedBytes) + " / " + formatBytes(totalBytes);
    const std::optional<double> speed = rate.bytesPerSecond();
    if (speed && *speed > 0)
        text += "\n" + formatBytes(std::llround(*speed)) + "/秒";
    const std::optional<double> left =
        rate.secondsFor(std::max<std::int64_t>(0, totalBytes - completedBytes));
    if (left)
        text += " · " + remainingText(*left);
    return text;
}

}  // namespace morvane
