// Pictures made small.
#pragma once

#include <vector>

namespace morvane {

/// Starts libvips for files of unknown origin: only the loaders this program needs, nothing cached,
/// one worker, no temporary files. Call once, before makeThumbnail.
void startImageLibrary(const char* programName);

/// Decodes the picture in `file` (a regular file opened for reading; stays open): upright, its
/// longest side at most `maxSide` pixels, never enlarged, converted to sRGB when it carries a
/// colour profile. Returns a PixelsHeader followed by the pixels, as media_protocol.h describes
/// them. Throws Refusal for anything that is not a whole, known picture.
std::vector<unsigned char> makeThumbnail(int file, int maxSide);

}  // namespace morvane
