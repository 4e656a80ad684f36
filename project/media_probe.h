// Which verified copies are plain media, and what the hand-off file says about them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "media/media_client.h"
#include "project/job_context.h"
#include "project/project_records.h"
#include "support/file_url.h"

namespace morvane {

/// Extensions (lower case, without the dot) that are looked at; deliberately narrower than the
/// planner's classification.
inline constexpr std::array<std::string_view, 3> supportedVideo{"mov", "mp4", "m4v"};
inline constexpr std::array<std::string_view, 7> supportedAudio{"wav", "aif", "aiff", "m4a",
                                                                "aac", "mp3", "caf"};

/// The probed description of one copy.
struct Media {
    ProjectPlanItem item;
    MediaTime duration;  ///< seconds as an exact fraction, above zero
    bool video = false;
    bool audio = false;
    std::int64_t width = 0;  ///< natural size in pixels; 0 without video
    std::int64_t height = 0;
    MediaTime frameDuration;    ///< shortest frame of the video track
    std::int64_t rate = 0;      ///< audio samples a second; 0 without audio
    std::int64_t channels = 0;  ///< 1 or 2; 0 without audio
};

/// True when the hand-off looks at a file of this name at all (its extension, in any case).
bool isSupportedMedia(std::string_view path);

/// Examines the copy of `item` at `url` through `client`, for at most 12 seconds. Nothing for
/// camera-card items and other extensions (both without opening the file), and for files that are
/// unreadable, slow or no plain media. Throws ProjectCoreError's cancelled case within about 0.1 s
/// of a stop by the user. The job's thread.
std::optional<Media> probe(const JobContext& context, MediaClient& client, const FileUrl& url,
                           const ProjectPlanItem& item);

}  // namespace morvane
