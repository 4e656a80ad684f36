#include <algorithm>
#include <bit>
#include <cmath>

#include "media/helper/byte_reader.h"
#include "media/helper/raw_picture.h"

namespace morvane {

namespace {

enum Mode : unsigned {
    Bitmap = 0,
    Greyscale = 1,
    Indexed = 2,
    Rgb = 3,
    Cmyk = 4,
    Multichannel = 7,
    Duotone = 8,
    Lab = 9
};

constexpr unsigned profileResource = 1039;
constexpr std::size_t paletteBytes = 768;

struct Header {
    bool isLarge = false;  ///< PSB: longer lengths
    unsigned channels = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned depth = 0;
    unsigned mode = 0;
};

struct Document {
    Header header;
    std::string_view palette;
    std::string_view profile;
    bool hasTransparency = false;
};

Header readHeader(ByteReader& reader) {
    Header header;
    reader.skip(4);
    const unsigned version = reader.big16();
    reader.skip(6);
    header.isLarge = version == 2;
    header.channels = reader.big16();
    header.height = reader.big32();
    header.width = reader.big32();
    header.depth = reader.big16();
    header.mode = reader.big16();
    const bool isKnownDepth =
        header.depth == 1 || header.depth == 8 || header.depth == 16 || header.depth == 32;
    if (version < 1 || version > 2 || header.channels < 1 || header.channels > 56 || !isKnownDepth ||
        header.mode > Lab || header.mode == 5 || header.mode == 6)
        throw Refusal("图片无法解码");
    return header;
}

std::string_view findProfile(std::string_view resources) {
    ByteReader reader(resources);
    while (!reader.atEnd()) {
        reader.skip(4);
        const unsigned kind = reader.big16();
        const unsigned nameLength = reader.u8();
        reader.skip(nameLength + (nameLength % 2 == 0 ? 1U : 0U));
        const std::uint32_t size = reader.big32();
        const std::string_view content = reader.take(size);
        if (kind == profileResource)
            return content;
        if (size % 2 == 1 && !reader.atEnd())
            reader.skip(1);
    }
    return {};
}

/// A negative count of layers says that the first extra channel is the picture's transparency.
bool marksTransparency(std::string_view layers, bool isLarge) {
    ByteReader reader(layers);
    const std::uint64_t size = layers.empty() ? 0 : isLarge ? reader.big64() : reader.big32();
    return size >= 2 && static_cast<std::int16_t>(reader.big16()) < 0;
}

Document readSections(ByteReader& reader) {
    Document document;
    document.header = readHeader(reader);
    document.palette = reader.take(reader.big32());
    document.profile = findProfile(reader.take(reader.big32()));
    const bool isLarge = document.header.isLarge;
    const std::string_view layers = reader.take(isLarge ? reader.big64() : reader.big32());
    document.hasTransparency = marksTransparency(layers, isLarge);
    return document;
}

void unpackRow(std::string_view packed, std::vector<unsigned char>& row) {
    std::size_t filled = 0;
    for (std::size_t at = 0; at < packed.size() && filled < row.size();) {
        const auto code = static_cast<signed char>(packed[at++]);
        if (code == -128)
            continue;
        const auto count = static_cast<std::size_t>(code >= 0 ? code + 1 : 1 - code);
        const std::size_t stored = code >= 0 ? count : 1;
        if (at + stored > packed.size() || filled + count > row.size())
            throw Refusal("图片无法解码");
        for (std::size_t i = 0; i < count; ++i)
            row[filled + i] = static_cast<unsigned char>(packed[at + (code >= 0 ? i : 0)]);
        at += stored;
        filled += count;
    }
    if (filled != row.size())
        throw Refusal("文件不完整");
}

/// Hands out the rows of the flattened picture, channel after channel.
class RowReader {
public:
    RowReader(ByteReader& reader, const Header& header) : reader_(reader) {
        row_.resize((std::size_t{header.width} * header.depth + 7) / 8);
        const unsigned coding = reader.big16();
        if (coding > 1)
            throw Refusal("图片无法解码");
        if (coding == 1) {
            const std::uint64_t entryBytes = header.isLarge ? 4 : 2;
            ByteReader lengths(reader.take(std::uint64_t{header.channels} * header.height * entryBytes));
            while (!lengths.atEnd())
                lengths_.push_back(header.isLarge ? lengths.big32() : lengths.big16());
        }
    }

    const std::vector<unsigned char>& next() {
        if (lengths_.empty()) {
            const std::string_view raw = reader_.take(row_.size());
            std::copy(raw.begin(), raw.end(), row_.begin());
        } else {
            unpackRow(reader_.take(lengths_.at(taken_++)), row_);
        }
        return row_;
    }

private:
    ByteReader& reader_;
    std::vector<std::uint32_t> lengths_;
    std::size_t taken_ = 0;
    std::vector<unsigned char> row_;
};

/// Light of the 32-bit modes is linear.
unsigned char fromLinear(std::uint32_t bits) {
    const float light = std::bit_cast<float>(bits);
    const float inRange = light > 0.0F ? std::min(light, 1.0F) : 0.0F;
    const float shown =
        inRange <= 0.0031308F ? 12.92F * inRange : 1.055F * std::pow(inRange, 1 / 2.4F) - 0.055F;
    return static_cast<unsigned char>(std::lround(shown * 255.0F));
}

unsigned char sample(const std::vector<unsigned char>& row, std::size_t x, unsigned depth) {
    switch (depth) {
        case 1:
            return (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 0 : 255;
        case 8:
            return row[x];
        case 16:
            return row[x * 2];
        default:
            return fromLinear(std::uint32_t{row[x * 4]} << 24 | std::uint32_t{row[x * 4 + 1]} << 16 |
                              std::uint32_t{row[x * 4 + 2]} << 8 | row[x * 4 + 3]);
    }
}

RawColour colourOf(unsigned mode) {
    switch (mode) {
        case Indexed:
        case Rgb:
            return RawColour::Rgb;
        case Cmyk:
            return RawColour::Cmyk;
        case Lab:
            return RawColour::Lab;
        default:
            return RawColour::Grey;
    }
}

void readIndexed(RowReader& rows, std::string_view palette, RawPicture& picture) {
    if (palette.size() < paletteBytes)
        throw Refusal("图片无法解码");
    auto* to = picture.bytes.data();
    for (int y = 0; y < picture.height; ++y) {
        const auto& row = rows.next();
        for (std::size_t x = 0; x < static_cast<std::size_t>(picture.width); ++x, to += 3) {
            for (std::size_t band = 0; band < 3; ++band)
                to[band] = static_cast<unsigned char>(palette[band * 256 + row[x]]);
        }
    }
}

void readPlanes(RowReader& rows, const Header& header, RawPicture& picture) {
    const auto bands = static_cast<std::size_t>(picture.bands());
    // Ink is stored upside down: 255 is none.
    const unsigned char flip = picture.colour == RawColour::Cmyk ? 255 : 0;
    for (std::size_t band = 0; band < bands; ++band) {
        auto* to = picture.bytes.data() + band;
        for (int y = 0; y < picture.height; ++y) {
            const auto& row = rows.next();
            for (std::size_t x = 0; x < static_cast<std::size_t>(picture.width); ++x, to += bands)
                *to = sample(row, x, header.depth) ^ flip;
        }
    }
}

/// Transparent pixels were mixed with white; takes the white out again.
void removeWhite(RawPicture& picture) {
    const auto bands = static_cast<std::size_t>(picture.bands());
    for (std::size_t at = 0; at < picture.bytes.size(); at += bands) {
        const int alpha = picture.bytes[at + bands - 1];
        for (std::size_t band = 0; band + 1 < bands && alpha > 0; ++band) {
            const int mixed = picture.bytes[at + band];
            picture.bytes[at + band] =
                static_cast<unsigned char>(std::clamp((mixed - 255 + alpha) * 255 / alpha, 0, 255));
        }
    }
}

}  // namespace

RawPicture readPsd(std::string_view file) {
    ByteReader reader(file);
    const Document document = readSections(reader);
    const Header& header = document.header;
    RawPicture picture;
    picture.colour = colourOf(header.mode);
    const bool hasOneChannel = header.mode == Indexed || picture.colour == RawColour::Grey;
    const int colours = hasOneChannel ? 1 : picture.bands();
    const auto channels = static_cast<int>(header.channels);
    if (channels < colours || (header.mode == Indexed && header.depth != 8))
        throw Refusal("图片无法解码");
    picture.hasAlpha =
        document.hasTransparency && channels > colours && (header.mode == Rgb || header.mode == Greyscale);
    picture.bytes.resize(checkedPictureBytes(header.width, header.height, picture.bands()));
    picture.width = static_cast<int>(header.width);
    picture.height = static_cast<int>(header.height);
    picture.profile.assign(document.profile.begin(), document.profile.end());
    RowReader rows(reader, header);
    if (header.mode == Indexed)
        readIndexed(rows, document.palette, picture);
    else
        readPlanes(rows, header, picture);
    if (picture.hasAlpha)
        removeWhite(picture);
    return picture;
}

}  // namespace morvane
