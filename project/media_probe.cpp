#include "project/media_probe.h"

#include <algorithm>
#include <chrono>
#include <string>

#include "project/project_errors.h"
#include "project/safe_open.h"
#include "support/path_text.h"
#include "support/text_fold.h"

namespace morvane {

namespace {

constexpr std::chrono::seconds longestWait{12};

}  // namespace

bool isSupportedMedia(std::string_view path) {
    const std::string extension = lowerCased(pathExtension(path));
    return std::ranges::find(supportedVideo, extension) != supportedVideo.end() ||
           std::ranges::find(supportedAudio, extension) != supportedAudio.end();
}

std::optional<Media> probe(const JobContext& context, MediaClient& client, const FileUrl& url,
                           const ProjectPlanItem& item) {
    context.throwIfCancelled();
    if (item.isCameraCard || !isSupportedMedia(url.path))
        return std::nullopt;
    UniqueFd file;
    try {
        file = openRead(url);
    } catch (const ProjectCoreError&) {
        return std::nullopt;
    }
    const auto result = client.probe(
        file, {.deadline = longestWait, .cancelled = [&context] { return context.isCancelled(); }});
    if (result.outcome == MediaOutcome::Cancelled)
        throw ProjectCoreError::cancelled();
    if (!result.value)
        return std::nullopt;
    const MediaFacts& facts = *result.value;
    return Media{.item = item,
                 .duration = facts.duration,
                 .video = facts.video,
                 .audio = facts.audio,
                 .width = facts.width,
                 .height = facts.height,
                 .frameDuration = facts.frameDuration,
                 .rate = facts.rate,
                 .channels = facts.channels};
}

}  // namespace morvane
