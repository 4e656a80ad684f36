#include "ctl/project_progress.h"

#include <algorithm>
#include <cstdio>

#include "support/format_text.h"

namespace morvane {
namespace {

constexpr int barWidth = 24;

std::string bar(double share) {
    const int filled = static_cast<int>(share * barWidth);
    std::string text(static_cast<std::size_t>(filled), '=');
    if (filled < barWidth)
        text += '>';
    text.resize(barWidth, ' ');
    return "[" + text + "]";
}

std::string clock(std::chrono::seconds time) {
    const auto count = static_cast<long long>(time.count());
    char text[32];
    if (count >= 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", count / 3600, count / 60 % 60, count % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", count / 60, count % 60);
    return text;
}

}  // namespace

std::string progressText(const ProjectProgress& progress, const RateEstimate& rate) {
    if (progress.totalBytes <= 0)
        return formatCount(progress.completedFiles) + "  " + progress.message;
    const double share = std::clamp(
        static_cast<double>(progress.completedBytes) / static_cast<double>(progress.totalBytes), 0.0, 1.0);
    char percent[16];
    std::snprintf(percent, sizeof percent, " %3d%%  ", static_cast<int>(share * 100));
    std::string text = bar(share) + percent + formatBytes(progress.completedBytes) + " / " +
                       formatBytes(progress.totalBytes);
    if (const auto speed = rate.bytesPerSecond())
        text += "  " + formatBytes(static_cast<std::int64_t>(*speed)) + "/s";
    if (const auto left = rate.remaining(progress.totalBytes))
        text += "  剩余 " + clock(*left);
    return text + "  " + progress.message;
}

void ProjectProgressLine::show(const ProjectProgress& progress, JobContext::Delivery delivery) {
    if (!line_.isShown())
        return;
    if (progress.totalBytes > 0)
        rate_.note(progress.completedBytes, RateEstimate::Clock::now());
    line_.show(progressText(progress, rate_), delivery == JobContext::Delivery::Always
                                                  ? ProgressLine::Pace::Now
                                                  : ProgressLine::Pace::Throttled);
}

}  // namespace morvane
