#include "media/helper/thumbnail.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vips/vips.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "media/helper/raw_picture.h"
#include "media/helper/refusal.h"
#include "media/media_protocol.h"

namespace morvane {

namespace {

constexpr std::size_t signatureBytes = 4096;

struct ObjectDeleter {
    void operator()(void* object) const { g_object_unref(object); }
};
using ImagePointer = std::unique_ptr<VipsImage, ObjectDeleter>;
using SourcePointer = std::unique_ptr<VipsSource, ObjectDeleter>;

/// The file's content in memory, for the readers that look all over it.
class MappedFile {
public:
    MappedFile(int file, off_t size) : size_(static_cast<std::size_t>(size)) {
        bytes_ = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
        if (bytes_ == MAP_FAILED)
            throw Refusal("文件过大");
    }
    ~MappedFile() { ::munmap(bytes_, size_); }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    std::string_view bytes() const { return {static_cast<const char*>(bytes_), size_}; }

private:
    void* bytes_ = nullptr;
    std::size_t size_ = 0;
};

[[noreturn]] void refuseDecoding() {
    vips_error_clear();
    throw Refusal("图片无法解码");
}

/// Formats that are decoded smaller at once, which is many times faster. Not TIFF and HEIF: there the
/// loaders would take a smaller copy from the file, whatever it shows.
bool isShrunkWhileRead(std::string_view signature) {
    const bool isJpeg = signature.starts_with("\xff\xd8");
    const bool isWebp = signature.starts_with("RIFF") && signature.substr(0, 12).ends_with("WEBP");
    const bool isPackedDrawing = signature.starts_with("\x1f\x8b");
    return isJpeg || isWebp || isPackedDrawing;
}

bool looksLikeMarkup(std::string_view signature) {
    if (signature.starts_with("\xef\xbb\xbf"))
        signature.remove_prefix(3);
    const auto first = signature.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && signature[first] == '<';
}

/// A picture decoded here, as libvips sees it; `picture` must outlive it.
ImagePointer imageOf(const RawPicture& picture) {
    const ImagePointer plain(vips_image_new_from_memory(picture.bytes.data(), picture.bytes.size(),
                                                        picture.width, picture.height, picture.bands(),
                                                        VIPS_FORMAT_UCHAR));
    if (!plain)
        refuseDecoding();
    VipsImage* result = nullptr;
    if (picture.colour == RawColour::Lab) {
        constexpr std::array<double, 3> scale{100.0 / 255.0, 1.0, 1.0};
        constexpr std::array<double, 3> offset{0.0, -128.0, -128.0};
        VipsImage* scaled = nullptr;
        if (vips_linear(plain.get(), &scaled, scale.data(), offset.data(), 3, nullptr) != 0)
            refuseDecoding();
        const ImagePointer inScale(scaled);
        vips_copy(inScale.get(), &result, "interpretation", VIPS_INTERPRETATION_LAB, nullptr);
    } else {
        const VipsInterpretation meaning = picture.colour == RawColour::Grey   ? VIPS_INTERPRETATION_B_W
                                           : picture.colour == RawColour::Cmyk ? VIPS_INTERPRETATION_CMYK
                                                                               : VIPS_INTERPRETATION_sRGB;
        vips_copy(plain.get(), &result, "interpretation", meaning, nullptr);
    }
    if (result == nullptr)
        refuseDecoding();
    if (!picture.profile.empty())
        vips_image_set_blob_copy(result, VIPS_META_ICC_NAME, picture.profile.data(), picture.profile.size());
    return ImagePointer(result);
}

/// An SVG drawing, drawn no larger than needed. The library's own recognition looks at the first
/// thousand bytes only, where drawing programs like to put comments and entities.
ImagePointer loadMarkup(int file, int maxSide) {
    double scale = 1.0;
    for (;;) {
        const SourcePointer source(vips_source_new_from_descriptor(file));
        VipsImage* image = nullptr;
        if (!source || vips_svgload_source(source.get(), &image, "scale", scale, nullptr) != 0)
            refuseDecoding();
        ImagePointer drawing(image);
        const int longest = std::max(vips_image_get_width(image), vips_image_get_height(image));
        if (scale < 1.0 || longest <= maxSide)
            return drawing;
        scale = static_cast<double>(maxSide) / longest;
    }
}

bool hasProfile(const VipsImage* image) {
    return vips_image_get_typeof(const_cast<VipsImage*>(image), VIPS_META_ICC_NAME) != 0;
}

/// How colours become sRGB. As they are: untagged numbers are sRGB already (libvips would otherwise
/// assume another profile for them).
enum class Colours { AsTheyAre, ByEmbeddedProfile };

VipsImage* shrunkFromImage(VipsImage* image, int maxSide, Colours colours) {
    VipsImage* shrunk = nullptr;
    if (colours == Colours::ByEmbeddedProfile)
        vips_thumbnail_image(image, &shrunk, maxSide, "height", maxSide, "size", VIPS_SIZE_DOWN,
                             "export_profile", "srgb", nullptr);
    else
        vips_thumbnail_image(image, &shrunk, maxSide, "height", maxSide, "size", VIPS_SIZE_DOWN, nullptr);
    return shrunk;
}

/// Passed on to the loader: the operation's own "fail_on" reaches loaders of named files only.
constexpr const char* loaderOptions = "[fail_on=truncated]";

VipsImage* shrunkFromFile(int file, int maxSide, Colours colours) {
    const SourcePointer source(vips_source_new_from_descriptor(file));
    if (!source)
        return nullptr;
    VipsImage* shrunk = nullptr;
    if (colours == Colours::ByEmbeddedProfile)
        vips_thumbnail_source(source.get(), &shrunk, maxSide, "height", maxSide, "size", VIPS_SIZE_DOWN,
                              "option_string", loaderOptions, "export_profile", "srgb", nullptr);
    else
        vips_thumbnail_source(source.get(), &shrunk, maxSide, "height", maxSide, "size", VIPS_SIZE_DOWN,
                              "option_string", loaderOptions, nullptr);
    return shrunk;
}

/// The whole picture, read when it is computed.
ImagePointer openWhole(int file) {
    const SourcePointer source(vips_source_new_from_descriptor(file));
    if (!source)
        refuseDecoding();
    ImagePointer image(
        vips_image_new_from_source(source.get(), loaderOptions, "access", VIPS_ACCESS_SEQUENTIAL, nullptr));
    if (!image)
        refuseDecoding();
    return image;
}

/// Eight-bit sRGB in memory: everything is computed here, so a broken file fails here.
ImagePointer computed(VipsImage* shrunk) {
    const ImagePointer input(shrunk);
    VipsImage* coloured = nullptr;
    if (!input || vips_colourspace(input.get(), &coloured, VIPS_INTERPRETATION_sRGB, nullptr) != 0)
        return nullptr;
    const ImagePointer inColour(coloured);
    VipsImage* bytes = nullptr;
    if (vips_cast(inColour.get(), &bytes, VIPS_FORMAT_UCHAR, nullptr) != 0)
        return nullptr;
    const ImagePointer inBytes(bytes);
    return ImagePointer(vips_image_copy_memory(inBytes.get()));
}

/// `shrink(colours)`, by the embedded profile where there is one; as they are when it is unusable.
template <class Shrink>
ImagePointer computedThumbnail(bool byProfile, Shrink shrink) {
    ImagePointer result;
    if (byProfile)
        result = computed(shrink(Colours::ByEmbeddedProfile));
    if (!result) {
        vips_error_clear();
        result = computed(shrink(Colours::AsTheyAre));
    }
    if (!result)
        refuseDecoding();
    return result;
}

unsigned char multiplied(unsigned char colour, unsigned char alpha) {
    return static_cast<unsigned char>((colour * alpha + 127) / 255);
}

std::vector<unsigned char> packed(const VipsImage* image) {
    const int width = vips_image_get_width(image);
    const int height = vips_image_get_height(image);
    const int bands = vips_image_get_bands(image);
    if (width < 1 || height < 1 || bands < 1)
        throw Refusal("图片无法解码");
    PixelsHeader header;
    header.width = static_cast<std::uint32_t>(width);
    header.height = static_cast<std::uint32_t>(height);
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<unsigned char> payload(sizeof header + pixels * 4);
    std::memcpy(payload.data(), &header, sizeof header);
    const auto* from = static_cast<const unsigned char*>(vips_image_get_data(const_cast<VipsImage*>(image)));
    unsigned char* to = payload.data() + sizeof header;
    const int colours = bands >= 3 ? 3 : 1;
    for (std::size_t i = 0; i < pixels; ++i, from += bands, to += 4) {
        const unsigned char alpha = bands > colours ? from[colours] : 255;
        to[0] = multiplied(from[colours - 1], alpha);
        to[1] = multiplied(from[colours / 2], alpha);
        to[2] = multiplied(from[0], alpha);
        to[3] = alpha;
    }
    return payload;
}

}  // namespace

void startImageLibrary(const char* programName) {
    // Big pictures that cannot be read row by row are decoded in memory, never in a temporary file.
    ::setenv("VIPS_DISC_THRESHOLD", "4g", 1);  // NOLINT(concurrency-mt-unsafe): before the first thread
    if (VIPS_INIT(programName) != 0)
        throw Refusal("图片库无法启动");
    vips_cache_set_max(0);
    vips_concurrency_set(1);
    vips_operation_block_set("VipsForeignLoad", TRUE);
    for (const char* loader :
         {"VipsForeignLoadJpeg", "VipsForeignLoadPng", "VipsForeignLoadNsgif", "VipsForeignLoadWebp",
          "VipsForeignLoadTiff", "VipsForeignLoadHeif", "VipsForeignLoadSvg", "VipsForeignLoadMagick"})
        vips_operation_block_set(loader, FALSE);
}

std::vector<unsigned char> makeThumbnail(int file, int maxSide) {
    struct stat facts {};
    if (::fstat(file, &facts) != 0)
        throw Refusal("无法读取文件");
    std::array<char, signatureBytes> head{};
    const ssize_t got = ::pread(file, head.data(), head.size(), 0);
    if (got <= 0)
        throw Refusal(got == 0 ? "文件是空的" : "无法读取文件");
    const std::string_view signature(head.data(), static_cast<std::size_t>(got));

    const bool isPsd = signature.starts_with("8BPS");
    if (isPsd || signature.starts_with("BM")) {
        const MappedFile content(file, facts.st_size);
        const RawPicture picture = isPsd ? readPsd(content.bytes()) : readBitmap(content.bytes());
        const ImagePointer image = imageOf(picture);
        return packed(computedThumbnail(hasProfile(image.get()), [&](Colours colours) {
                          return shrunkFromImage(image.get(), maxSide, colours);
                      }).get());
    }
    if (looksLikeMarkup(signature)) {
        const ImagePointer drawing = loadMarkup(file, maxSide);
        return packed(computedThumbnail(false, [&](Colours colours) {
                          return shrunkFromImage(drawing.get(), maxSide, colours);
                      }).get());
    }
    const bool byProfile = hasProfile(openWhole(file).get());
    return packed(computedThumbnail(byProfile, [&](Colours colours) {
                      return isShrunkWhileRead(signature)
                                 ? shrunkFromFile(file, maxSide, colours)
                                 : shrunkFromImage(openWhole(file).get(), maxSide, colours);
                  }).get());
}

}  // namespace morvane
