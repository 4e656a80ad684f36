// Pictures of every kind, made small.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

#include "media/media_client.h"
#include "tests/media_maker.h"
#include "tests/test_support.h"

namespace morvane::test {

namespace {

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
    int alpha = 255;
};

Colour at(const Pixels& picture, int x, int y) {
    const auto* pixel = &picture.bytes.at((static_cast<std::size_t>(y) * picture.width + x) * 4);
    return {pixel[2], pixel[1], pixel[0], pixel[3]};
}

testing::AssertionResult isNear(const Colour& found, const Colour& wanted, int tolerance = 12) {
    const int most = std::max({std::abs(found.red - wanted.red), std::abs(found.green - wanted.green),
                               std::abs(found.blue - wanted.blue), std::abs(found.alpha - wanted.alpha)});
    if (most <= tolerance)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "found " << found.red << " " << found.green << " " << found.blue << " " << found.alpha;
}

const Colour red{255, 0, 0};
const Colour green{0, 255, 0};
const Colour blue{0, 0, 255};
const Colour white{255, 255, 255};

std::string big(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}
std::string little(std::uint64_t value, int bytes) {
    std::string text = big(value, bytes);
    std::reverse(text.begin(), text.end());
    return text;
}

/// A JPEG's EXIF segment that holds nothing but the orientation.
std::string withOrientation(const std::string& jpeg, int orientation) {
    const std::string tiff = std::string("MM\0*", 4) + big(8, 4) + big(1, 2) + big(0x0112, 2) + big(3, 2) +
                             big(1, 4) + big(static_cast<std::uint64_t>(orientation), 2) + big(0, 2) +
                             big(0, 4);
    const std::string body = std::string("Exif\0\0", 6) + tiff;
    return jpeg.substr(0, 2) + "\xff\xe1" + big(body.size() + 2, 2) + body + jpeg.substr(2);
}

/// A Photoshop document of one plain picture: `planes` holds the coded channels.
std::string psd(int channels, int width, int height, int depth, int mode, const std::string& planes,
                const std::string& palette = {}, int layers = 0, int version = 1) {
    const auto number = [](int value) { return static_cast<std::uint64_t>(value); };
    const int lengthBytes = version == 2 ? 8 : 4;
    std::string section;
    if (layers != 0)
        section = big(2, lengthBytes) + big(static_cast<std::uint16_t>(layers), 2);
    return "8BPS" + big(number(version), 2) + std::string(6, '\0') + big(number(channels), 2) +
           big(number(height), 4) + big(number(width), 4) + big(number(depth), 2) + big(number(mode), 2) +
           big(palette.size(), 4) + palette + big(0, 4) + big(section.size(), lengthBytes) + section + planes;
}

std::string bitmap(int width, int height, int depth, int coding, const std::string& palette,
                   const std::string& pixels) {
    const std::string header = little(40, 4) + little(static_cast<std::uint32_t>(width), 4) +
                               little(static_cast<std::uint32_t>(height), 4) + little(1, 2) +
                               little(static_cast<std::uint64_t>(depth), 2) +
                               little(static_cast<std::uint64_t>(coding), 4) + little(pixels.size(), 4) +
                               std::string(8, '\0') + little(palette.size() / 4, 4) + little(0, 4);
    const std::size_t offset = 14 + header.size() + palette.size();
    return "BM" + little(offset + pixels.size(), 4) + little(0, 4) + little(offset, 4) + header + palette +
           pixels;
}

class Thumbnail : public testing::Test {
protected:
    /// The master picture: 1600 by 800, left half red, right half blue.
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TemporaryFolder>();
        client_ = std::make_unique<MediaClient>();
        ffmpeg({"-f", "lavfi", "-i", "color=red:size=800x800", "-f", "lavfi", "-i", "color=blue:size=800x800",
                "-filter_complex", "hstack", "-frames:v", "1", "-pix_fmt", "rgb24", path("master.png")});
    }
    static void TearDownTestSuite() {
        client_.reset();
        folder_.reset();
    }

    static std::string path(const std::string& name) { return *folder_ / name; }
    static MediaResult<Pixels> ask(const std::string& name, int maxSide = 1200) {
        return client_->thumbnail(path(name), maxSide, {});
    }
    static Pixels picture(const std::string& name, int maxSide = 1200) {
        auto result = ask(name, maxSide);
        if (!result.value)
            throw std::runtime_error(name + ": " + result.reason);
        return std::move(*result.value);
    }
    static Pixels pictureOf(const std::string& name, const std::string& bytes) {
        writeFile(path(name), bytes);
        return picture(name);
    }
    static std::string refusal(const std::string& name, const std::string& bytes) {
        writeFile(path(name), bytes);
        const auto result = ask(name);
        EXPECT_FALSE(result.value) << name;
        EXPECT_NE(result.outcome, MediaOutcome::Done) << name;
        return result.reason;
    }

    static inline std::unique_ptr<TemporaryFolder> folder_;
    static inline std::unique_ptr<MediaClient> client_;
};

TEST_F(Thumbnail, EveryListedKindShowsItsPicture) {
    for (const char* name : {"a.jpg", "a.jpeg", "a.png", "a.gif", "a.webp", "a.tif", "a.tiff", "a.heic"})
        vips({"copy", path("master.png"), path(name)});
    ffmpeg({"-i", path("master.png"), "-pix_fmt", "bgr24", path("a.bmp")});
    const std::string plane = std::string(800, '\xff') + std::string(800, '\0');
    std::string reds;
    std::string blues;
    for (int y = 0; y < 800; ++y) {
        reds += plane;
        blues += std::string(800, '\0') + std::string(800, '\xff');
    }
    writeFile(path("a.psd"),
              psd(3, 1600, 800, 8, 3, big(0, 2) + reds + std::string(reds.size(), '\0') + blues));
    writeFile(path("a.svg"),
              "<svg xmlns='http://www.w3.org/2000/svg' width='1600' height='800'>"
              "<rect width='800' height='800' fill='red'/><rect x='800' width='800' height='800' "
              "fill='blue'/></svg>");
    for (const char* name : {"a.jpg", "a.jpeg", "a.png", "a.gif", "a.webp", "a.tif", "a.tiff", "a.heic",
                             "a.bmp", "a.psd", "a.svg"}) {
        const Pixels found = picture(name);
        EXPECT_EQ(found.width, 1200) << name;
        EXPECT_EQ(found.height, 600) << name;
        ASSERT_EQ(found.bytes.size(), 1200U * 600U * 4U) << name;
        EXPECT_TRUE(isNear(at(found, 300, 300), red)) << name;
        EXPECT_TRUE(isNear(at(found, 900, 300), blue)) << name;
    }
}

TEST_F(Thumbnail, IsNeverEnlarged) {
    vips({"black", path("small.png"), "30", "20"});
    EXPECT_EQ(picture("small.png").width, 30);
    EXPECT_EQ(picture("small.png").height, 20);
    const Pixels drawing =
        pictureOf("small.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='24' height='12'/>");
    EXPECT_EQ(drawing.width, 24);
    EXPECT_EQ(drawing.height, 12);
}

TEST_F(Thumbnail, AFileWithSmallerCopiesOfItsPictureShowsTheBestOne) {
    vips({"tiffsave", path("master.png"), path("pyramid.tif"), "--tile", "--pyramid"});
    EXPECT_EQ(picture("pyramid.tif").width, 1200);
    vips({"resize", path("master.png"), path("medium.png"), "0.25"});
    vips({"tiffsave", path("medium.png"), path("small-pyramid.tif"), "--tile", "--pyramid"});
    EXPECT_EQ(picture("small-pyramid.tif").width, 400);
    EXPECT_TRUE(isNear(at(picture("small-pyramid.tif"), 100, 100), red));
}

TEST_F(Thumbnail, LongestSideIsAsAsked) {
    EXPECT_EQ(picture("master.png", 100).width, 100);
    EXPECT_EQ(picture("master.png", 100).height, 50);
    vips({"rot", path("master.png"), path("tall.png"), "d90"});
    EXPECT_EQ(picture("tall.png").height, 1200);
    EXPECT_EQ(picture("tall.png").width, 600);
}

TEST_F(Thumbnail, StandsUpright) {
    vips({"jpegsave", path("master.png"), path("plain.jpg"), "--strip"});
    const std::string plain = readAll(path("plain.jpg"));
    const Pixels turned = pictureOf("turned.jpg", withOrientation(plain, 6));
    EXPECT_EQ(turned.width, 600);
    EXPECT_EQ(turned.height, 1200);
    EXPECT_TRUE(isNear(at(turned, 300, 200), red));
    EXPECT_TRUE(isNear(at(turned, 300, 1000), blue));
    const Pixels mirrored = pictureOf("mirrored.jpg", withOrientation(plain, 2));
    EXPECT_TRUE(isNear(at(mirrored, 200, 300), blue));
}

// The same numbers mean another colour under a profile; without one they are taken as they are.
TEST_F(Thumbnail, ProfilesAreConvertedToSrgb) {
    vips({"jpegsave", path("master.png"), path("srgb.jpg"), "--strip", "--Q", "95"});
    ffmpeg({"-f", "lavfi", "-i", "color=0x00c000:size=64x64", "-frames:v", "1", "-pix_fmt", "rgb24",
            path("numbers.png")});
    vips({"icc_export", path("numbers.png"), path("wide.tif"), "--output-profile", "p3"});
    const Colour original = at(picture("numbers.png"), 32, 32);
    EXPECT_TRUE(isNear(at(picture("wide.tif"), 32, 32), original, 4));
    vips({"copy", path("wide.tif"), path("stripped.png[strip]")});
    EXPECT_FALSE(isNear(at(picture("stripped.png"), 32, 32), original, 4));
}

TEST_F(Thumbnail, AnUnusableProfileIsIgnored) {
    writeFile(path("broken.icc"), std::string(200, 'x'));
    vips({"tiffsave", path("master.png"), path("profiled.tif"), "--profile", path("broken.icc")});
    EXPECT_TRUE(isNear(at(picture("profiled.tif"), 300, 300), red));
}

TEST_F(Thumbnail, OtherColourSpacesAndDepths) {
    vips({"colourspace", path("master.png"), path("sixteen.png"), "rgb16"});
    EXPECT_TRUE(isNear(at(picture("sixteen.png"), 300, 300), red));
    vips({"colourspace", path("master.png"), path("grey.png"), "b-w"});
    const Colour grey = at(picture("grey.png"), 300, 300);
    EXPECT_EQ(grey.red, grey.green);
    EXPECT_EQ(grey.green, grey.blue);
    vips({"icc_export", path("master.png"), path("ink.jpg"), "--output-profile", "cmyk"});
    const Colour printed = at(picture("ink.jpg"), 300, 300);
    EXPECT_GT(printed.red, 180);
    EXPECT_LT(printed.blue, 80);
}

TEST_F(Thumbnail, ColoursAreMultipliedByAlpha) {
    ffmpeg(
        {"-f", "lavfi", "-i", "color=red@0.5:size=32x32,format=rgba", "-frames:v", "1", path("glass.png")});
    const Colour found = at(picture("glass.png"), 16, 16);
    EXPECT_NEAR(found.alpha, 128, 2);
    EXPECT_NEAR(found.red, 128, 4);
    EXPECT_EQ(found.green, 0);
}

TEST_F(Thumbnail, PhotoshopModesAndCodings) {
    const std::string none(4, '\0');
    const std::string full(4, '\xff');
    // Two rows of two pixels each: raw, then run-length coded (a run of two, and a literal of two).
    EXPECT_TRUE(
        isNear(at(pictureOf("raw.psd", psd(3, 2, 2, 8, 3, big(0, 2) + none + full + none)), 1, 1), green));
    std::string packed = big(1, 2);
    for (int row = 0; row < 6; ++row)
        packed += big(row < 2 ? 3 : 2, 2);
    for (int row = 0; row < 2; ++row)
        packed += std::string("\x01\xff\xff", 3);
    for (int row = 0; row < 4; ++row)
        packed += std::string("\xff\x00", 2);
    EXPECT_TRUE(isNear(at(pictureOf("packed.psd", psd(3, 2, 2, 8, 3, packed)), 1, 1), red));
    EXPECT_TRUE(isNear(at(pictureOf("grey.psd", psd(1, 2, 2, 8, 1, big(0, 2) + full)), 0, 0), white));
    EXPECT_TRUE(isNear(
        at(pictureOf("ink.psd", psd(4, 2, 2, 8, 4, big(0, 2) + full + full + full + full)), 0, 0), white));
    EXPECT_TRUE(
        isNear(at(pictureOf("bits.psd", psd(1, 2, 2, 1, 0, big(0, 2) + std::string(2, '\0'))), 0, 0), white));
    EXPECT_TRUE(isNear(
        at(pictureOf("deep.psd", psd(3, 2, 2, 16, 3, big(0, 2) + full + full + none + none + none + none)), 1,
           1),
        red));
    std::string palette(768, '\0');
    palette[512 + 7] = '\xff';
    EXPECT_TRUE(isNear(
        at(pictureOf("indexed.psd", psd(1, 2, 2, 8, 2, big(0, 2) + std::string(4, '\x07'), palette)), 0, 0),
        blue));
    const std::string lab = big(0, 2) + full + std::string(8, '\x80');
    EXPECT_TRUE(isNear(at(pictureOf("lab.psd", psd(3, 2, 2, 8, 9, lab)), 0, 0), white));
    const std::string light =
        big(0x3f800000, 4) + big(0x3f800000, 4) + big(0x3f800000, 4) + big(0x3f800000, 4);
    EXPECT_TRUE(isNear(at(pictureOf("light.psd", psd(1, 2, 2, 32, 1, big(0, 2) + light)), 0, 0), white));
    EXPECT_TRUE(
        isNear(at(pictureOf("large.psd", psd(3, 2, 2, 8, 3, big(0, 2) + none + none + full, {}, 0, 2)), 0, 0),
               blue));
}

TEST_F(Thumbnail, PhotoshopTransparencyIsTakenOutOfTheWhite) {
    const std::string planes =
        big(0, 2) + std::string(1, '\xff') + std::string(2, '\x7f') + std::string(1, '\x80');
    const Colour found = at(pictureOf("glass.psd", psd(4, 1, 1, 8, 3, planes, {}, -1)), 0, 0);
    EXPECT_TRUE(isNear(found, {128, 0, 0, 128}, 3));
    // Without the mark the fourth channel is a saved selection.
    EXPECT_EQ(at(pictureOf("selection.psd", psd(4, 1, 1, 8, 3, planes)), 0, 0).alpha, 255);
}

TEST_F(Thumbnail, BitmapDepthsAndCodings) {
    const std::string palette = little(0x0000ff, 4) + little(0xff0000, 4);  // blue, red
    EXPECT_TRUE(isNear(
        at(pictureOf("one.bmp", bitmap(2, 1, 1, 0, palette, std::string("\x40\0\0\0", 4))), 1, 0), red));
    EXPECT_TRUE(isNear(
        at(pictureOf("four.bmp", bitmap(2, 1, 4, 0, palette, std::string("\x01\0\0\0", 4))), 1, 0), red));
    EXPECT_TRUE(isNear(
        at(pictureOf("eight.bmp", bitmap(2, 1, 8, 0, palette, std::string("\0\x01\0\0", 4))), 0, 0), blue));
    EXPECT_TRUE(
        isNear(at(pictureOf("sixteen.bmp", bitmap(2, 1, 16, 0, {}, std::string("\0\x7c\xe0\x03", 4))), 1, 0),
               green));
    EXPECT_TRUE(isNear(
        at(pictureOf("thirtytwo.bmp", bitmap(1, 1, 32, 0, {}, std::string("\xff\0\0\0", 4))), 0, 0), blue));
    // Rows stand bottom up unless the height is negative.
    const std::string rows = std::string("\xff\0\0\0", 4) + std::string("\0\0\xff\0", 4);
    EXPECT_TRUE(isNear(at(pictureOf("up.bmp", bitmap(1, 2, 24, 0, {}, rows)), 0, 0), red));
    EXPECT_TRUE(isNear(at(pictureOf("down.bmp", bitmap(1, -2, 24, 0, {}, rows)), 0, 0), blue));
    const std::string runs("\x03\x01\0\0\0\x03\x01\0\x01\0\0\x01", 12);
    const Pixels coded = pictureOf("runs.bmp", bitmap(3, 2, 8, 1, palette, runs));
    EXPECT_TRUE(isNear(at(coded, 2, 1), red));
    EXPECT_TRUE(isNear(at(coded, 1, 0), blue));
    const std::string fields = little(0x000000ff, 4) + little(0x0000ff00, 4) + little(0x00ff0000, 4);
    writeFile(path("fields.bmp"), bitmap(1, 1, 32, 3, fields, std::string("\xff\0\0\0", 4)));
    EXPECT_TRUE(isNear(at(picture("fields.bmp"), 0, 0), red));
}

TEST_F(Thumbnail, DrawingsShowTextInTheSystemsFonts) {
    const std::string head = "<svg xmlns='http://www.w3.org/2000/svg' width='300' height='100'>";
    const std::string text = "<text x='10' y='80' font-size='80' fill='red'>素材助手</text>";
    const Pixels found = pictureOf("text.svg", head + text + "</svg>");
    int inked = 0;
    for (int y = 0; y < found.height; ++y) {
        for (int x = 0; x < found.width; ++x)
            inked += at(found, x, y).alpha > 128 ? 1 : 0;
    }
    EXPECT_GT(inked, 2000);
}

TEST_F(Thumbnail, DrawingsOpenNoOtherFile) {
    const std::string uri = "file://" + path("master.png");
    const std::string drawing =
        "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' "
        "width='100' height='100'><image width='100' height='100' href='" +
        uri + "'/><image width='100' height='100' xlink:href='" + path("master.png") + "'/></svg>";
    EXPECT_EQ(at(pictureOf("outside.svg", drawing), 25, 50).alpha, 0);
    const std::string entity =
        "<!DOCTYPE svg [<!ENTITY x SYSTEM 'file:///etc/passwd'>]>"
        "<svg xmlns='http://www.w3.org/2000/svg' width='100' height='100'>"
        "<text y='50' font-size='40'>&x;</text></svg>";
    writeFile(path("entity.svg"), entity);
    if (const auto result = ask("entity.svg"); result.value) {
        for (int x = 0; x < 100; ++x)
            EXPECT_EQ(at(*result.value, x, 40).alpha, 0);
    }
}

TEST_F(Thumbnail, DrawingsAreRecognizedBehindLongPreambles) {
    const std::string preamble = "<?xml version='1.0'?><!--" + std::string(3000, 'x') + "-->\n";
    const std::string body =
        "<svg xmlns='http://www.w3.org/2000/svg' width='4000' height='2000'>"
        "<rect width='4000' height='2000' fill='red'/></svg>";
    const Pixels found = pictureOf("late.svg", preamble + body);
    EXPECT_EQ(found.width, 1200);
    EXPECT_EQ(found.height, 600);
    EXPECT_TRUE(isNear(at(found, 600, 300), red));
}

TEST_F(Thumbnail, HalfAFileIsNoPicture) {
    ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=1600x800", "-frames:v", "1", "-pix_fmt", "rgb24",
            path("busy.png")});
    for (const char* name : {"busy.jpg", "busy.gif", "busy.webp", "busy.tif", "busy.heic"})
        vips({"copy", path("busy.png"), path(name)});
    vips({"jpegsave", path("busy.png"), path("steps.jpg"), "--interlace"});
    vips({"pngsave", path("busy.png"), path("steps.png"), "--interlace"});
    ffmpeg({"-i", path("busy.png"), "-pix_fmt", "bgr24", path("busy.bmp")});
    for (const std::string name : {"busy.jpg", "busy.png", "busy.gif", "busy.webp", "busy.tif", "busy.heic",
                                   "busy.bmp", "steps.jpg", "steps.png"}) {
        ASSERT_TRUE(ask(name).value) << name;
        const std::string whole = readAll(path(name));
        for (const double part : {0.9, 0.5, 0.1, 0.01})
            refusal("half-" + name,
                    whole.substr(0, static_cast<std::size_t>(static_cast<double>(whole.size()) * part)));
    }
    refusal("half.psd", psd(3, 100, 100, 8, 3, big(0, 2) + std::string(20'000, 'x')));
    refusal("half.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'><rect width='9'");
}

TEST_F(Thumbnail, WhatIsNoPictureIsRefused) {
    EXPECT_EQ(refusal("empty.jpg", ""), "文件是空的");
    refusal("text.png", "这不是图片。");
    refusal("page.svg", "<html><body>no</body></html>");
    refusal("noise.psd", "8BPS" + std::string(500, '\x7f'));
    refusal("noise.bmp", "BM" + std::string(500, '\x7f'));
    // Formats outside the list stay closed, whatever the file is called.
    vips({"copy", path("master.png"), path("other.jp2")});
    refusal("other.jpg", readAll(path("other.jp2")));
    refusal("script.svg", "%!PS-Adobe-3.0\nshowpage\n");
    writeFile(path("still.gif"), readAll(path("master.png")));
    EXPECT_TRUE(ask("still.gif").value) << "content decides, not the name";
}

TEST_F(Thumbnail, HugeDimensionsEndInAnAnswer) {
    // 200,000 by 200,000 pixels of nothing, in every format whose header can say so.
    const std::uint64_t side = 200'000;
    refusal("huge.bmp",
            bitmap(static_cast<int>(side), static_cast<int>(side), 24, 0, {}, std::string(100, '\0')));
    refusal("huge.psd", psd(3, static_cast<int>(side), static_cast<int>(side), 8, 3, big(0, 2)));
    writeFile(path("huge.svg"),
              "<svg xmlns='http://www.w3.org/2000/svg' width='200000' height='100000'>"
              "<rect width='200000' height='100000' fill='red'/></svg>");
    if (const auto result = ask("huge.svg"); result.value) {
        EXPECT_LE(result.value->width, 1200);
    }
    vips({"black", path("huge.png"), "20000", "20000"});
    const auto result = client_->thumbnail(path("huge.png"), 1200, {.deadline = std::chrono::seconds(60)});
    if (result.value) {
        EXPECT_EQ(result.value->width, 1200);
    }
    EXPECT_TRUE(ask("master.png").value);
}

TEST_F(Thumbnail, AChangedFileShowsItsNewPicture) {
    vips({"copy", path("master.png"), path("changing.png")});
    EXPECT_TRUE(isNear(at(picture("changing.png"), 300, 300), red));
    vips({"rot", path("master.png"), path("other.png"), "d180"});
    writeFile(path("changing.png"), readAll(path("other.png")));
    EXPECT_TRUE(isNear(at(picture("changing.png"), 300, 300), blue));
}

}  // namespace

}  // namespace morvane::test
