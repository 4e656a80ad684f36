#include <algorithm>
#include <array>
#include <bit>
#include <limits>

#include "media/helper/byte_reader.h"
#include "media/helper/raw_picture.h"

namespace morvane {

namespace {

enum Coding : unsigned { Plain = 0, RunLength8 = 1, RunLength4 = 2, BitFields = 3, AlphaBitFields = 6 };

constexpr std::uint32_t coreHeaderBytes = 12;
constexpr std::uint32_t infoHeaderBytes = 40;
constexpr std::uint32_t alphaHeaderBytes = 56;
constexpr std::uint32_t profileHeaderBytes = 124;
constexpr std::uint32_t embeddedProfile = 0x4d424544;  // "MBED"

struct Header {
    std::uint32_t pixelsAt = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool isTopDown = false;
    unsigned depth = 0;
    unsigned coding = Plain;
    std::array<std::uint32_t, 4> masks{};  ///< red, green, blue, alpha
    std::vector<std::array<unsigned char, 3>> palette;
    std::string_view profile;
};

void readMasks(ByteReader& reader, std::uint32_t headerBytes, Header& header) {
    if (header.coding == BitFields || header.coding == AlphaBitFields) {
        const bool hasAlpha = headerBytes >= alphaHeaderBytes || header.coding == AlphaBitFields;
        for (std::size_t i = 0; i < (hasAlpha ? 4U : 3U); ++i)
            header.masks[i] = reader.little32();
        header.coding = Plain;
    } else if (header.depth == 16) {
        header.masks = {0x7c00, 0x03e0, 0x001f, 0};
    } else {
        header.masks = {0xff0000, 0x00ff00, 0x0000ff, 0};
    }
}

void readPalette(ByteReader& reader, std::size_t colours, std::size_t entryBytes, Header& header) {
    const std::size_t wanted = std::size_t{1} << header.depth;
    if (colours == 0 || colours > wanted)
        colours = wanted;
    for (std::size_t i = 0; i < colours; ++i) {
        const std::string_view entry = reader.take(entryBytes);
        header.palette.push_back({static_cast<unsigned char>(entry[2]), static_cast<unsigned char>(entry[1]),
                                  static_cast<unsigned char>(entry[0])});
    }
    header.palette.resize(wanted);
}

std::string_view profileOf(std::string_view file, std::uint64_t headerAt) {
    ByteReader reader(file);
    reader.moveTo(headerAt + 56);
    if (reader.little32() != embeddedProfile)
        return {};
    reader.moveTo(headerAt + 112);
    const std::uint32_t offset = reader.little32();
    const std::uint32_t size = reader.little32();
    reader.moveTo(headerAt + offset);
    return reader.take(size);
}

Header readHeader(std::string_view file) {
    ByteReader reader(file);
    Header header;
    reader.skip(10);
    header.pixelsAt = reader.little32();
    const std::uint64_t headerAt = reader.offset();
    const std::uint32_t headerBytes = reader.little32();
    std::uint32_t colours = 0;
    if (headerBytes == coreHeaderBytes) {
        header.width = reader.little16();
        header.height = reader.little16();
        reader.skip(2);
        header.depth = reader.little16();
        readMasks(reader, headerBytes, header);
    } else if (headerBytes >= infoHeaderBytes) {
        header.width = reader.little32();
        const auto height = static_cast<std::int32_t>(reader.little32());
        header.isTopDown = height < 0;
        header.height =
            height < 0 ? 0U - static_cast<std::uint32_t>(height) : static_cast<std::uint32_t>(height);
        reader.skip(2);
        header.depth = reader.little16();
        header.coding = reader.little32();
        reader.skip(12);
        colours = reader.little32();
        reader.skip(4);
        const unsigned coding = header.coding;
        readMasks(reader, headerBytes, header);
        if (headerBytes > infoHeaderBytes || coding == Plain)
            reader.moveTo(headerAt + headerBytes);
        if (headerBytes >= profileHeaderBytes)
            header.profile = profileOf(file, headerAt);
    } else {
        throw Refusal("图片无法解码");
    }
    if (header.depth <= 8)
        readPalette(reader, colours, headerBytes == coreHeaderBytes ? 3 : 4, header);
    return header;
}

/// One band of a pixel whose bits are given by a mask, scaled to 0..255.
class MaskedBand {
public:
    explicit MaskedBand(std::uint32_t mask)
        : mask_(mask), shift_(mask == 0 ? 0 : std::countr_zero(mask)), most_(mask >> shift_) {}
    unsigned char of(std::uint32_t pixel) const {
        if (most_ == 0)
            return 0;
        return static_cast<unsigned char>((std::uint64_t{(pixel & mask_) >> shift_} * 255 + most_ / 2) /
                                          most_);
    }

private:
    std::uint32_t mask_;
    int shift_;
    std::uint32_t most_;
};

std::uint32_t pixelBits(std::string_view row, std::size_t x, unsigned bytes) {
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < bytes; ++i)
        bits |= std::uint32_t{static_cast<std::uint8_t>(row[x * bytes + i])} << (8 * i);
    return bits;
}

void paintDirect(std::string_view row, const Header& header, bool hasAlpha, unsigned char* to) {
    const MaskedBand red(header.masks[0]);
    const MaskedBand green(header.masks[1]);
    const MaskedBand blue(header.masks[2]);
    const MaskedBand alpha(header.masks[3]);
    for (std::size_t x = 0; x < header.width; ++x) {
        const std::uint32_t bits = pixelBits(row, x, header.depth / 8);
        *to++ = red.of(bits);
        *to++ = green.of(bits);
        *to++ = blue.of(bits);
        if (hasAlpha)
            *to++ = alpha.of(bits);
    }
}

void paintIndexed(std::string_view row, const Header& header, unsigned char* to) {
    const unsigned perByte = 8 / header.depth;
    for (std::size_t x = 0; x < header.width; ++x) {
        const auto packed = static_cast<std::uint8_t>(row[x / perByte]);
        const unsigned shift = 8 - header.depth * (x % perByte + 1);
        const auto& colour = header.palette[packed >> shift & ((1U << header.depth) - 1)];
        to = std::copy(colour.begin(), colour.end(), to);
    }
}

/// Run-length coded indexes, as rows of one byte a pixel, bottom row first; what no code paints
/// stays colour 0.
std::vector<unsigned char> unpacked(ByteReader& reader, const Header& header) {
    std::vector<unsigned char> indexes(std::size_t{header.width} * header.height);
    std::size_t x = 0;
    std::size_t y = 0;
    const auto put = [&](unsigned char index) {
        if (x >= header.width || y >= header.height)
            throw Refusal("图片无法解码");
        indexes[y * header.width + x++] = index;
    };
    const bool isNibbles = header.coding == RunLength4;
    const auto putPair = [&](std::size_t i, unsigned char packed) {
        put(!isNibbles ? packed : i % 2 == 0 ? packed >> 4 : packed & 15);
    };
    for (;;) {
        const unsigned count = reader.u8();
        const unsigned char value = reader.u8();
        if (count > 0) {
            for (std::size_t i = 0; i < count; ++i)
                putPair(i, value);
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            return indexes;
        } else if (value == 2) {
            x += reader.u8();
            y += reader.u8();
        } else {
            const std::size_t bytes = isNibbles ? (value + 1U) / 2 : value;
            const std::string_view literal = reader.take(bytes + bytes % 2);
            for (std::size_t i = 0; i < value; ++i)
                putPair(i, static_cast<unsigned char>(literal[isNibbles ? i / 2 : i]));
        }
    }
}

bool isKnown(const Header& header) {
    switch (header.coding) {
        case Plain:
            return header.depth == 1 || header.depth == 4 || header.depth == 8 || header.depth == 16 ||
                   header.depth == 24 || header.depth == 32;
        case RunLength8:
            return header.depth == 8;
        case RunLength4:
            return header.depth == 4;
        default:
            return false;
    }
}

/// Many programs leave the alpha bits zero and mean an opaque picture.
void makeOpaqueWhenAllClear(RawPicture& picture) {
    for (std::size_t at = 3; at < picture.bytes.size(); at += 4) {
        if (picture.bytes[at] != 0)
            return;
    }
    for (std::size_t at = 3; at < picture.bytes.size(); at += 4)
        picture.bytes[at] = 255;
}

}  // namespace

std::size_t checkedPictureBytes(std::uint64_t width, std::uint64_t height, int bands) {
    constexpr std::uint64_t longestSide = 300'000;
    constexpr std::uint64_t mostBytes = std::uint64_t{1} << 30;
    if (width == 0 || height == 0 || width > longestSide || height > longestSide)
        throw Refusal("图片无法解码");
    const std::uint64_t bytes = width * height * static_cast<std::uint64_t>(bands);
    if (bytes > mostBytes)
        throw Refusal("图片过大");
    return bytes;
}

RawPicture readBitmap(std::string_view file) {
    Header header = readHeader(file);
    if (!isKnown(header))
        throw Refusal("图片无法解码");
    RawPicture picture;
    picture.hasAlpha = header.depth > 8 && header.masks[3] != 0;
    picture.bytes.resize(checkedPictureBytes(header.width, header.height, picture.bands()));
    picture.width = static_cast<int>(header.width);
    picture.height = static_cast<int>(header.height);
    picture.profile.assign(header.profile.begin(), header.profile.end());
    ByteReader reader(file);
    reader.moveTo(header.pixelsAt);
    std::vector<unsigned char> indexes;
    std::size_t rowBytes = (std::size_t{header.width} * header.depth + 31) / 32 * 4;
    if (header.coding != Plain) {
        indexes = unpacked(reader, header);
        header.depth = 8;
        header.palette.resize(256);
        rowBytes = header.width;
        reader = ByteReader({reinterpret_cast<const char*>(indexes.data()), indexes.size()});
    }
    const std::size_t lineBytes = std::size_t{header.width} * static_cast<std::size_t>(picture.bands());
    for (std::uint32_t y = 0; y < header.height; ++y) {
        const std::uint32_t line = header.isTopDown ? y : header.height - 1 - y;
        unsigned char* to = picture.bytes.data() + line * lineBytes;
        const std::string_view row = reader.take(rowBytes);
        if (header.depth <= 8)
            paintIndexed(row, header, to);
        else
            paintDirect(row, header, picture.hasAlpha, to);
    }
    if (picture.hasAlpha)
        makeOpaqueWhenAllClear(picture);
    return picture;
}

}  // namespace morvane
