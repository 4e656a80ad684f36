// Pictures of the formats that libvips has no loader of its own for. It would hand them to
// ImageMagick, which decodes anything beyond a few million pixels into temporary files, and those
// are forbidden here.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace morvane {

enum class RawColour { Grey, Rgb, Cmyk, Lab };

/// Rows from top to bottom, eight bits a band, bands interleaved. CMYK holds amounts of ink; Lab holds
/// L scaled to 0..255 and a, b offset by 128.
struct RawPicture {
    int width = 0;
    int height = 0;
    RawColour colour = RawColour::Rgb;
    bool hasAlpha = false;
    std::vector<unsigned char> bytes;
    std::vector<unsigned char> profile;  ///< embedded ICC profile, empty when there is none

    int bands() const {
        const int colours = colour == RawColour::Grey ? 1 : colour == RawColour::Cmyk ? 4 : 3;
        return colours + (hasAlpha ? 1 : 0);
    }
};

/// The flattened picture of a Photoshop document (PSD and PSB; every colour mode; 1, 8, 16 and 32 bits
/// a channel; raw or run-length coded). Throws Refusal.
RawPicture readPsd(std::string_view file);

/// A Windows or OS/2 bitmap (1 to 32 bits a pixel, bit fields, run-length coding). Throws Refusal.
RawPicture readBitmap(std::string_view file);

/// Throws Refusal unless a picture of this size is sensible to hold in memory; returns its bytes.
std::size_t checkedPictureBytes(std::uint64_t width, std::uint64_t height, int bands);

}  // namespace morvane
