// The talk between the program and its decoding helper `morvane-media`, as constants and records;
// the writer, the reader and the tests use only these.
//
// The helper is started with one end of a Unix stream socket pair as descriptor 3 and nothing else
// open but the null device on 0 to 2. Both ends run on one machine from one build, so records
// travel as they lie in memory. The talk is strictly request, answer, request, answer:
//
//   program -> helper   MediaRequest, with exactly one descriptor (SCM_RIGHTS): the media file,
//                       opened read-only
//   helper -> program   MediaAnswer, then `payloadBytes` bytes:
//                         status Done,   job Thumbnail   PixelsHeader, then height * width * 4 bytes
//                         status Done,   job Probe       ProbeRecord
//                         status Refused                 a short reason in UTF-8
//
// A thumbnail's bytes are rows from top to bottom without padding, four bytes a pixel in the order
// blue, green, red, alpha, colours multiplied by alpha, sRGB.
//
// The helper closes the descriptor before it answers, keeps nothing from one request to the next,
// and ends when the socket is closed. It ends itself when a request needs longer than
// `limitMilliseconds` of wall time or of processor time. Anything that does not follow these rules
// (another mark, a size beyond the limits, an end of file in the middle) means that the other side
// is broken: the program kills the helper, the helper ends.
#pragma once

#include <cstdint>

namespace morvane {

constexpr std::uint32_t mediaRequestMark = 0x4d525651;
constexpr std::uint32_t mediaAnswerMark = 0x4d525641;
/// The descriptor on which the helper finds its end of the socket.
constexpr int mediaSocketDescriptor = 3;
/// Longest side of a thumbnail that may be asked for, in pixels.
constexpr std::uint32_t mediaLargestSide = 1200;
constexpr std::uint32_t mediaLongestReason = 300;

enum class MediaJob : std::uint32_t { Thumbnail = 1, Probe = 2 };
enum class MediaStatus : std::uint32_t { Done = 1, Refused = 2 };

struct MediaRequest {
    std::uint32_t mark = mediaRequestMark;
    MediaJob job = MediaJob::Probe;
    std::uint32_t maxSide = 0;  ///< pixels; 1 to mediaLargestSide for a thumbnail, 0 for a probe
    std::uint32_t limitMilliseconds = 0;
};

struct MediaAnswer {
    std::uint32_t mark = mediaAnswerMark;
    MediaStatus status = MediaStatus::Refused;
    std::uint32_t payloadBytes = 0;
};

struct PixelsHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// Fields as in `MediaFacts` (media_client.h); flags are 0 or 1.
struct ProbeRecord {
    std::int64_t durationValue = 0;
    std::int64_t frameDurationValue = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t rate = 0;
    std::int64_t channels = 0;
    std::int32_t durationTimescale = 1;
    std::int32_t frameDurationTimescale = 1;
    std::uint32_t video = 0;
    std::uint32_t audio = 0;
};

static_assert(sizeof(MediaRequest) == 16 && sizeof(MediaAnswer) == 12 && sizeof(ProbeRecord) == 64);

}  // namespace morvane
