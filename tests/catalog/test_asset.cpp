#include "catalog/asset.h"

#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/json_read.h"

namespace morvane {
namespace {

struct KindCase {
    std::string path;
    std::string kind;
    std::string symbol;
};

class KindOfPath : public testing::TestWithParam<KindCase> {};

TEST_P(KindOfPath, FollowsTheLastExtensionInAnyCase) {
    Asset asset;
    asset.path = GetParam().path;
    EXPECT_EQ(asset.kind(), GetParam().kind) << asset.path;
    EXPECT_EQ(asset.symbol(), GetParam().symbol) << asset.path;
}

INSTANTIATE_TEST_SUITE_P(
    Names, KindOfPath,
    testing::Values(KindCase{"/a/b/Take 01.WAV", "音频", "waveform"},
                    KindCase{"/a/b/clip.M2TS", "视频", "film"}, KindCase{"/a/b/still.HeIc", "图片", "photo"},
                    KindCase{"/a/b/look.cube", "其他", "doc"}, KindCase{"/a/b/readme.txt", "其他", "doc"},
                    KindCase{"/a/b/README", "其他", "doc"}, KindCase{"/a/b/archive.mov.zip", "其他", "doc"},
                    KindCase{"/a/b/take.zip.mov", "视频", "film"}, KindCase{"/a/b.mov/README", "其他", "doc"},
                    KindCase{"/a/b/trailing.", "其他", "doc"}, KindCase{"/a/b/雨夜.MP4", "视频", "film"},
                    // The Kelvin sign lower-cases to k.
                    KindCase{"/a/b/clip.m\u212Av", "视频", "film"},
                    KindCase{"/a/b/clip.ｍｏｖ", "其他", "doc"},
                    KindCase{"/a/b/clip.averyveryverylongextension", "其他", "doc"}));

TEST(ExtensionLists, AreDisjointAndLowerCase) {
    std::set<std::string_view> all;
    const auto take = [&all](const auto& list) {
        for (const std::string_view extension : list) {
            EXPECT_TRUE(all.insert(extension).second) << extension;
            EXPECT_EQ(extension.find_first_of(".ABCDEFGHIJKLMNOPQRSTUVWXYZ"), std::string_view::npos);
            EXPECT_TRUE(indexableKind("x." + std::string(extension)).has_value()) << extension;
        }
    };
    take(audioExt);
    take(videoExt);
    take(imageExt);
    take(otherExt);
    EXPECT_EQ(all.size(), 41U);
    EXPECT_EQ(indexableKind("x.txt"), std::nullopt);
    EXPECT_EQ(indexableKind("mov"), std::nullopt);
    EXPECT_EQ(indexableKind("x.pdf"), MediaKind::Other);
}

TEST(KindFilter, FollowsTheOrderOfTheChoices) {
    EXPECT_EQ(kindFilterAt(-1), std::nullopt);
    EXPECT_EQ(kindFilterAt(0), std::nullopt);
    EXPECT_EQ(kindFilterAt(1), MediaKind::Audio);
    EXPECT_EQ(kindFilterAt(4), MediaKind::Other);
    EXPECT_EQ(kindFilterAt(5), std::nullopt);
    EXPECT_EQ(kindFilterNamed("图片"), std::optional<KindFilter>(KindFilter(MediaKind::Image)));
    EXPECT_EQ(kindFilterNamed("全部"), std::optional<KindFilter>(KindFilter()));
    EXPECT_FALSE(kindFilterNamed("image").has_value());
    for (const MediaKind kind : {MediaKind::Audio, MediaKind::Video, MediaKind::Image, MediaKind::Other})
        EXPECT_EQ(kindFilterNamed(kindLabel(kind)), std::optional<KindFilter>(KindFilter(kind)));
}

TEST(AssetJson, HoldsExactlyTheFiveKeys) {
    const Asset asset{"/a/雨 \"1\".mov", "/a", "雨 \"1\".mov", 5'000'000'000, 1700000000.25};
    const nlohmann::json encoded = encodeAsset(asset);
    EXPECT_EQ(encoded.size(), 5U);
    const Asset decoded = decodeAsset(parseJson(encoded.dump()));
    EXPECT_EQ(decoded.path, asset.path);
    EXPECT_EQ(decoded.root, asset.root);
    EXPECT_EQ(decoded.relative, asset.relative);
    EXPECT_EQ(decoded.size, asset.size);
    EXPECT_EQ(decoded.modified, asset.modified);
}

TEST(AssetJson, RefusesMissingKeysAndOtherTypes) {
    const nlohmann::json whole = encodeAsset({"/a/b.mov", "/a", "b.mov", 1, 2.5});
    for (const char* key : {"path", "root", "relative", "size", "modified"}) {
        nlohmann::json damaged = whole;
        damaged.erase(key);
        EXPECT_THROW(decodeAsset(damaged), JsonError) << key;
        damaged = whole;
        damaged[key] = nlohmann::json::array();
        EXPECT_THROW(decodeAsset(damaged), JsonError) << key;
    }
    nlohmann::json textSize = whole;
    textSize["size"] = "1";
    EXPECT_THROW(decodeAsset(textSize), JsonError);
    EXPECT_THROW(decodeAsset(nlohmann::json::array()), JsonError);
}

}  // namespace
}  // namespace morvane
