// Thumbnails and facts about media files, decoded by the helper program `morvane-media` so that a
// hostile or broken file can never harm the asking process.
#pragma once

#include "support/unique_fd.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace morvane {

/// An exact time in seconds: value / timescale, in lowest terms, timescale > 0.
struct MediaTime {
    std::int64_t value = 0;
    std::int32_t timescale = 1;
    bool operator==(const MediaTime&) const = default;
};

/// A decoded picture: rows from top to bottom without padding, four bytes a pixel in the order
/// blue, green, red, alpha, colours multiplied by alpha, sRGB. On little-endian machines this is
/// QImage::Format_ARGB32_Premultiplied.
struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;
};

/// What the tracks of a plain media file hold: at most one video and one audio track, at least one
/// of them.
struct MediaFacts {
    MediaTime duration;  ///< above zero
    bool video = false;
    bool audio = false;
    std::int64_t width = 0;  ///< pixels as shown, before rotation; 0 without video
    std::int64_t height = 0;
    MediaTime frameDuration;    ///< shortest frame of the video track; 0/1 without video
    std::int64_t rate = 0;      ///< audio samples a second; 0 without audio
    std::int64_t channels = 0;  ///< 1 or 2; 0 without audio
    bool operator==(const MediaFacts&) const = default;
};

/// How a request ended.
enum class MediaOutcome {
    Done,        ///< there is a value
    Refused,     ///< no regular readable file, or not decodable; `reason` says why
    Deadline,    ///< not answered in time; the helper was killed
    Cancelled,   ///< the caller's `cancelled` said so; the helper was killed
    HelperLost,  ///< the helper crashed or could not be started
};

template <class Value>
struct MediaResult {
    MediaOutcome outcome = MediaOutcome::Refused;
    std::optional<Value> value;  ///< present exactly when outcome is Done
    std::string reason;          ///< one short sentence piece in Chinese, empty when Done
};

/// How long a request may take, and how the caller stops it earlier.
struct MediaLimits {
    std::chrono::milliseconds deadline{12'000};
    /// Asked about twenty times a second on the calling thread; empty: never cancelled.
    std::function<bool()> cancelled{};
};

/// Asks the helper. The first request starts it; it is kept for the next ones, killed at the
/// deadline or on a cancel, and started again when it is gone. Every operation blocks the caller
/// until it has an outcome (never the main thread) and never throws for what a file holds. Any
/// thread; calls on one client take turns, so use one client for each independent line of work.
class MediaClient {
public:
    /// Uses the helper that belongs to the running program (see mediaHelperPath).
    MediaClient();
    explicit MediaClient(std::string helperPath);
    /// Ends the helper without waiting for a stuck one.
    ~MediaClient();
    MediaClient(const MediaClient&) = delete;
    MediaClient& operator=(const MediaClient&) = delete;

    /// The picture in the file at `path` (absolute), upright, its longest side at most `maxSide`
    /// (1 to 1200) pixels, never enlarged. A symbolic link or anything but a regular file is
    /// refused without waiting. The file is closed again when this returns.
    MediaResult<Pixels> thumbnail(const std::string& path, int maxSide, const MediaLimits& limits);
    /// The facts about the file at `path` (absolute), opened as for a thumbnail; refused unless it is
    /// plain media as MediaFacts says.
    MediaResult<MediaFacts> probe(const std::string& path, const MediaLimits& limits);
    /// The same for a file that is already open for reading.
    MediaResult<MediaFacts> probe(const UniqueFd& file, const MediaLimits& limits);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Where the helper of the running program is: beside it, else in ../bin or ../lib/morvane from
/// there, else in the installation's lib/morvane. The last is returned when none exists.
std::string mediaHelperPath();

}  // namespace morvane
