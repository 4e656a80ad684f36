#include "library_ui/asset_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace morvane {
namespace {

Asset asset(const std::string& path, const std::string& relative, std::int64_t size = 0) {
    return {.path = path, .root = "/r", .relative = relative, .size = size, .modified = 0};
}

TEST(AssetText, TitleCarriesTheStarOfAFavourite) {
    const Asset take = asset("/r/同期声/Take 2.WAV", "同期声/Take 2.WAV");
    EXPECT_EQ(titleText(viewOf(take), Favorite::No), "Take 2.WAV");
    EXPECT_EQ(titleText(viewOf(take), Favorite::Yes), "★ Take 2.WAV");
}

TEST(AssetText, SubtitleIsKindAndExtensionInCapitals) {
    const struct {
        const char* name;
        const char* text;
    } rows[] = {
        {"a.wav", "音频 · WAV"},       {"clip.MoV", "视频 · MOV"},     {"p.heic", "图片 · HEIC"},
        {"look.cube", "其他 · CUBE"},  {"README", "其他 · "},          {"archive.mov.zip", "其他 · ZIP"},
        {"straße.maß", "其他 · MASS"}, {"take.zip.mov", "视频 · MOV"},
    };
    for (const auto& row : rows) {
        const Asset each = asset(std::string("/r/") + row.name, row.name);
        EXPECT_EQ(subtitleText(viewOf(each)), row.text) << row.name;
    }
}

TEST(AssetText, FolderIsTheRelativePathWithoutItsLastPiece) {
    EXPECT_EQ(folderText(viewOf(asset("/r/a/b/c.mov", "a/b/c.mov"))), "a/b");
    EXPECT_EQ(folderText(viewOf(asset("/r/c.mov", "c.mov"))), "");
}

TEST(AssetText, DetailHasTwoLines) {
    const Asset take = asset("/r/旅拍/同期声/Take 2.wav", "旅拍/同期声/Take 2.wav", 86'400'000);
    EXPECT_EQ(detailText(viewOf(take)), "音频 · WAV · 86.4 MB\n旅拍/同期声");
    EXPECT_EQ(detailText(viewOf(asset("/r/x.pdf", "x.pdf", 0))), "其他 · PDF · 0 KB\n");
}

TEST(AssetText, AccessibleTextNamesEverythingAndTheFavourite) {
    const Asset take = asset("/r/同期声/Take 2.wav", "同期声/Take 2.wav", 86'400'000);
    EXPECT_EQ(rowAccessibleText(viewOf(take), Favorite::No), "Take 2.wav，音频 · WAV，同期声，86.4 MB");
    EXPECT_EQ(rowAccessibleText(viewOf(take), Favorite::Yes),
              "Take 2.wav，音频 · WAV，同期声，86.4 MB，已收藏");
    EXPECT_EQ(rowAccessibleText(viewOf(asset("/r/a.wav", "a.wav", 0)), Favorite::No),
              "a.wav，音频 · WAV，0 KB");
}

TEST(AssetText, BytesThatAreNoUtf8DoNoHarm) {
    const QString shown = shownText("a\xff.mov");
    EXPECT_TRUE(shown.startsWith('a'));
    EXPECT_TRUE(shown.endsWith(".mov"));
    EXPECT_TRUE(shown.contains(QChar::ReplacementCharacter));
}

TEST(ClockText, MinutesAreNotWrappedIntoHours) {
    const struct {
        double seconds;
        const char* text;
    } rows[] = {
        {0, "0:00"},
        {9.99, "0:09"},
        {59.999, "0:59"},
        {60, "1:00"},
        {72, "1:12"},
        {3725, "62:05"},
        {360000, "6000:00"},
        {-0.5, "0:00"},
        {std::numeric_limits<double>::infinity(), "0:00"},
        {std::numeric_limits<double>::quiet_NaN(), "0:00"},
        {1e300, "0:00"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(clockText(row.seconds), row.text) << row.seconds;
    EXPECT_EQ(clockPairText(12.3, 198), "0:12 / 3:18");
}

TEST(SelectionNotice, CountsTheRows) {
    EXPECT_EQ(selectionNotice(2), "已选择 2 个文件，可一起拖出或复制。");
    EXPECT_EQ(selectionNotice(1'000'000), "已选择 1000000 个文件，可一起拖出或复制。");
}

}  // namespace
}  // namespace morvane
