// Facts about a plain media file.
#pragma once

#include "media/media_protocol.h"

namespace morvane {

/// Reads `file` (a regular file opened for reading; stays open) with libavformat through its
/// descriptor alone. Throws Refusal unless the file is plain media:
///   - a container of the QuickTime/MP4 family, WAVE, AIFF, CAF, raw AAC or MP3;
///   - no time-code track; at most one video and one audio track (cover art is no video track),
///     at least one of them;
///   - audio of one or two channels with a known rate; video with a known size and frame duration;
///   - a duration above zero, and no samples beyond the end of the file.
/// Times are exact: the longest track's duration, counted packet by packet where the container
/// states none; the frame duration is the shortest one the track's sample table holds.
ProbeRecord probeMedia(int file);

}  // namespace morvane
